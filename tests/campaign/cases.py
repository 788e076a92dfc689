# SPDX-License-Identifier: MIT
"""Every case of the campaign, in the order in which they run."""
from disks import (directory_goes_and_comes, full_disk, output_goes_and_comes, read_only_disk)
from files import (burst, damaged_settings, damaged_terrain_cache, issued_again, short_files, slow_writers)
from processes import (closed_streams, daemon_signals, few_descriptors, full_log_pipe, inotify_used_up,
                       kill_while_converting, kill_while_writing, little_address_space, log_reader_gone,
                       one_pid_file, pauses)
from trial import Skipped, Trial

__all__ = ["CASES", "Skipped", "Trial"]

CASES = (kill_while_writing, kill_while_converting, daemon_signals, pauses, one_pid_file, closed_streams,
         log_reader_gone, full_log_pipe, few_descriptors, inotify_used_up, little_address_space,
         full_disk, read_only_disk, output_goes_and_comes, directory_goes_and_comes,
         damaged_settings, damaged_terrain_cache, issued_again, slow_writers, short_files, burst)

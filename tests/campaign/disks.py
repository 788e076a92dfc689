# SPDX-License-Identifier: MIT
"""Cases of disks and directories. An image that could not be written comes when it can be."""
import os
import shutil

from trial import LATER, SOON, check_images, hidden_files, mounted, remount, require, wait_images


def on_disk(service, folder):
    """The output is there from now on; settings are read afresh for every image."""
    text = (service.root / "background.conf").read_text()
    service.images = folder / "images"
    service.images.mkdir(exist_ok=True)
    lines = ["directory=%s" % service.images if line.startswith("directory=") else line for line in text.split("\n")]
    (service.root / "background.conf").write_text("\n".join(lines))


def full_disk(trial):
    """The output's disk fills up while images come, and has room again."""
    with mounted(4) as folder, trial.service() as service:
        on_disk(service, folder)
        trial.ready(service)
        filler = folder / "filler"
        room = os.statvfs(folder).f_bavail * os.statvfs(folder).f_frsize
        filler.write_bytes(bytes(room - trial.rng.randrange(2 << 10, 900 << 10)))
        endings = []
        for _ in range(8):
            endings.append(trial.drop(service))
            service.settle()
        during = check_images(service)
        errors = service.count_lines("Writing output failed")
        require(errors > 0, "the disk never filled up")
        require(not hidden_files(service.images), "something half-written stays: %s" % hidden_files(service.images))
        filler.unlink()
        wait_images(service, endings, LATER)
        return "%d errors, %d images while full, all %d in the end" % (errors, during, len(endings) + 1)


def read_only_disk(trial):
    """The output's disk is read-only for a while."""
    with mounted(64) as folder, trial.service() as service:
        on_disk(service, folder)
        trial.ready(service)
        remount(folder, "ro")
        endings = [trial.drop(service) for _ in range(5)]
        service.wait_line("Writing output failed", deadline=SOON)
        service.settle()
        require(check_images(service) == 1, "an image on a read-only disk")
        remount(folder, "rw")
        wait_images(service, endings, LATER)
        return "%d images came when it could be written" % len(endings)


def output_goes_and_comes(trial):
    """The output directory is moved away and comes back, empty."""
    with trial.running() as service:
        service.images.rename(service.root / "away")
        endings = [trial.drop(service) for _ in range(4)]
        service.wait_line("Writing output failed", deadline=SOON)
        service.settle()
        service.images.mkdir()
        wait_images(service, endings, LATER)
        return "%d images came when it was back" % len(endings)


def directory_goes_and_comes(trial):
    """The product directory is removed, replaced, and turned into a link, with volumes in each."""
    with trial.running() as service:
        endings = []
        for way in ("removed", "replaced", "linked"):
            if way == "removed":
                shutil.rmtree(service.volumes)
                service.settle()
                service.volumes.mkdir()
            elif way == "replaced":
                (service.root / "new").mkdir()
                service.volumes.rename(service.root / "old")
                (service.root / "new").rename(service.volumes)
            else:
                service.volumes.rename(service.root / "target")
                service.volumes.symlink_to(service.root / "target")
            endings.append(trial.drop(service))
            wait_images(service, endings, LATER)
        return "removed, replaced and linked: an image each"

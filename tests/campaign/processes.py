# SPDX-License-Identifier: MIT
"""Cases of signals, limits and streams of the process."""
import ctypes
import os
import pathlib
import resource
import signal
import subprocess
import time

from files import TERRAIN_ONLY, read_image
from harness import BINARIES, Failure
from trial import LATER, SOON, check_images, hidden_files, require, wait_images, wait_until


def kill_while_writing(trial):
    """Killed at random moments while images are written: every image there is whole, and the next start works."""
    service = trial.service(background="")
    kills = trial.options.kills
    with service:
        began = time.monotonic()
        trial.ready(service)
        seconds = time.monotonic() - began
        for _ in range(kills):
            service.settle()
            for _ in range(3):
                trial.drop(service)
            time.sleep(trial.rng.uniform(0, 1.5 * seconds))
            service.kill()
            check_images(service)
            service.start()
        trial.ready(service)
        images = check_images(service)
        service.settle()
        left = len(hidden_files(service.images))
        return "%d kills, %d images, all whole; %d hidden temporaries left" % (kills, images, left)


def kill_while_converting(trial):
    """Killed while terrain is converted: the cache that stays gives the same picture as one that was never killed."""
    settings = trial.terrain_settings() + TERRAIN_ONLY
    with trial.running(settings=settings) as service:
        reference = read_image(service, trial)
    kills = trial.options.kills // 3
    with trial.service(settings=settings) as service:
        for _ in range(kills):
            service.settle()
            trial.drop(service)
            time.sleep(trial.rng.uniform(0.05, 1.5))
            service.kill()
            service.start()
        trial.ready(service)
        require(read_image(service, trial) == reference, "another picture after %d kills" % kills)
        check_images(service)
        return "%d kills, the picture is the same" % kills


class Daemon:
    """The service in the background, over the folders of a harness service that is not started."""

    def __init__(self, service, name="pid"):
        self.service = service
        self.pid_file = service.root / name
        self.log = service.root / (name + ".log")

    def start(self, **popen):
        """The exit status of the parent."""
        return subprocess.run([BINARIES / "quor3dd", "--daemon", "--logfile=%s" % self.log, "--loglevel=2"],
                              env={**self.service.environment(), "PIDFILE": str(self.pid_file)},
                              timeout=60, check=False, **popen).returncode

    def pid(self):
        try:
            return int(self.pid_file.read_text())
        except (OSError, ValueError):
            return 0

    def lives(self):
        return self.pid() != 0 and pathlib.Path("/proc/%d" % self.pid()).exists() and \
            "Z" != pathlib.Path("/proc/%d/stat" % self.pid()).read_text().rpartition(")")[2].split()[0]

    def send(self, number):
        os.kill(self.pid(), number)

    def wait_for(self, text, count=1, deadline=SOON):
        wait_until("'%s' in the daemon's log" % text, lambda: self.log.exists() and
                   self.log.read_text(errors="replace").count(text) >= count, deadline)

    def stop(self):
        pid = self.pid()
        if pid and self.lives():
            os.kill(pid, signal.SIGTERM)
            wait_until("end after SIGTERM", lambda: not pathlib.Path("/proc/%d" % pid).exists() or
                       " Z " in pathlib.Path("/proc/%d/stat" % pid).read_text())


class DaemonTrial:
    """A daemon over fresh folders; a context manager."""

    def __init__(self, trial, **more):
        self.service = trial.service(**more)
        self.service.process = subprocess.Popen(["true"])
        self.daemon = Daemon(self.service)

    def __enter__(self):
        require(self.daemon.start() == 0 and self.daemon.lives(), "the daemon did not start")
        self.daemon.wait_for("starting")
        return self.service, self.daemon

    def __exit__(self, *reason):
        try:
            if self.daemon.lives():
                self.daemon.send(signal.SIGKILL)
        finally:
            self.service.__exit__(*reason)


def daemon_signals(trial):
    """SIGTERM at random moments of a job, among SIGHUPs: a clean end, whole images, no PID file."""
    images, rounds = 0, 8
    with DaemonTrial(trial, background="") as (service, daemon):
        for _ in range(rounds):
            time.sleep(0.5)
            for _ in range(3):
                trial.drop(service)
                daemon.send(signal.SIGHUP)
                time.sleep(trial.rng.uniform(0, 0.3))
            require(daemon.lives(), "SIGHUP ended the service")
            daemon.stop()
            require(not daemon.pid_file.exists(), "the PID file stays after a clean end")
            images = check_images(service)
            require(not hidden_files(service.images), "something half-written stays after a clean end")
            require(daemon.start() == 0, "no start after a clean end")
        return "%d stops, %d images, all whole" % (rounds, images)


def pauses(trial):
    """Stopped and continued at random moments while images are written."""
    with trial.running() as service:
        endings = []
        for _ in range(10):
            endings.append(trial.drop(service))
            time.sleep(trial.rng.uniform(0, 0.2))
            service.process.send_signal(signal.SIGSTOP)
            endings.append(trial.drop(service))
            time.sleep(0.2)
            service.process.send_signal(signal.SIGCONT)
        wait_images(service, endings, LATER)
        return "10 pauses, %d volumes, all drawn" % len(endings)


def one_pid_file(trial):
    """A second service over the same PID file ends with an error; a file that a kill left behind does no harm."""
    with DaemonTrial(trial) as (_, daemon):
        pid = daemon.pid()
        second = daemon.start(stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        require(daemon.pid() == pid and daemon.lives(), "the second service took the PID file")
        require(second != 0, "the second service started too")
        daemon.send(signal.SIGKILL)
        wait_until("end", lambda: not daemon.lives())
        # its lock goes with the last of its threads, a moment after it is seen as dead
        wait_until("start over the PID file of a killed one", lambda: daemon.start() == 0 and daemon.pid() != pid)
        return "the second one ended with status %d; started over a killed one's file" % second


def closed_streams(trial):
    """Started without standard input, output and error: no line of the log ends up in an image or a product."""
    streams = {"stdin": None, "stdout": None, "stderr": None}

    def close():
        for descriptor in range(3):
            os.close(descriptor)
    with trial.service(loglevel=3) as service:
        service.kill()
        service.start(preexec_fn=close, **streams)
        trial.ready(service)
        endings = [trial.drop(service) for _ in range(4)]
        wait_images(service, endings, LATER)
        for path in service.volumes.iterdir():
            require(path.read_bytes() == trial.volume.read_bytes(), "%s was written to" % path)
        return "%d images, all whole" % len(endings)


def log_reader_gone(trial):
    """Whoever read standard error is gone, before the start and while it runs."""
    with trial.service(loglevel=3) as service:
        for when in ("before the start", "while it runs"):
            service.kill()
            reader, writer = os.pipe()
            if when == "before the start":
                os.close(reader)
            service.start(stderr=writer)
            os.close(writer)
            trial.ready(service)
            if when == "while it runs":
                os.close(reader)
            wait_images(service, [trial.drop(service) for _ in range(3)], LATER)
        return "images came with a reader that was gone before the start, and while it runs"


def full_log_pipe(trial):
    """Nobody reads standard error at debug level: work goes on."""
    with trial.service(loglevel=3) as service:
        service.kill()
        reader, writer = os.pipe()
        service.start(stderr=writer)
        os.close(writer)
        try:
            trial.ready(service)
            for _ in range(30):
                endings = [trial.drop(service)]
                wait_images(service, endings, SOON)
        finally:
            os.close(reader)
        return "30 images while the pipe was full"


def few_descriptors(trial):
    """The process runs out of descriptors for a while: what arrives then is drawn when there are some again."""
    with trial.running() as service:
        _, hard = resource.prlimit(service.process.pid, resource.RLIMIT_NOFILE)
        used = max(int(name) for name in os.listdir("/proc/%d/fd" % service.process.pid)) + 1
        resource.prlimit(service.process.pid, resource.RLIMIT_NOFILE, (used, hard))
        endings = [trial.drop(service) for _ in range(5)]
        time.sleep(5)
        require(service.process.poll() is None, "the service ended")
        resource.prlimit(service.process.pid, resource.RLIMIT_NOFILE, (hard, hard))
        wait_images(service, endings, LATER)
        return "%d volumes arrived meanwhile, all drawn" % len(endings)


def inotify_used_up(trial):
    """No inotify instance is left at the start: one line says so, and directories are looked at all the same."""
    library = ctypes.CDLL(None, use_errno=True)
    taken = []
    while len(taken) < 100000:
        descriptor = library.inotify_init1(os.O_CLOEXEC)
        if descriptor < 0:
            break
        taken.append(descriptor)
    try:
        with trial.service() as service:
            service.settle()
            ending = trial.drop(service)
            began = time.monotonic()
            service.wait_image(ending, LATER)
            seconds = time.monotonic() - began
            check_images(service, [ending])
            lines = sum(any(word in line.lower() for word in ("watch", "notif")) for _, line in service.lines)
            require(1 <= lines <= 4, "%d lines about directories that cannot be watched" % lines)
    finally:
        for descriptor in taken:
            os.close(descriptor)
    return "an image after %.0f s, %d lines say why" % (seconds, lines)


def little_address_space(trial):
    """With little address space it works, or ends with a line and a status, never by a signal."""
    outcomes = []
    for mebibytes in (300, 600, 1000, 1400, 1600, 2000):
        service = trial.service()
        try:
            service.start(preexec_fn=lambda: resource.setrlimit(  # noqa: B023
                resource.RLIMIT_AS, (mebibytes << 20, mebibytes << 20)))  # noqa: B023
            try:
                trial.ready(service, SOON)
                outcomes.append("%d MiB: works" % mebibytes)
            except (Failure, OSError):
                status = service.process.poll()
                require(status is not None, "%d MiB: alive without images" % mebibytes)
                require(status > 0, "%d MiB: ended by signal %d" % (mebibytes, -status))
                outcomes.append("%d MiB: status %d" % (mebibytes, status))
        finally:
            service.__exit__()
    return ", ".join(outcomes)

# SPDX-License-Identifier: MIT
"""What the cases of the campaign share: a service with small images, arrivals that are counted, and what is asked of
every outcome."""
import contextlib
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import time

from harness import DATA_ONLY, Failure, Service, time_key

SMALL = "width=320\nheight=240\n"
# Longer than the minute in which the service looks again at what has no notifier.
SOON, LATER = 30, 100


class Skipped(Exception):
    """The case cannot be tried here; the reason."""


def require(condition, text):
    if not condition:
        raise Failure(text)


def check_tiff(path):
    """That the strips of an uncompressed image are all there; its width and height."""
    data = pathlib.Path(path).read_bytes()
    require(len(data) > 8 and data[:2] in (b"II", b"MM"), "%s: no image (%d bytes)" % (path, len(data)))
    order = "<" if data[:2] == b"II" else ">"
    tags = {}
    try:
        at, = struct.unpack_from(order + "I", data, 4)
        for entry in range(struct.unpack_from(order + "H", data, at)[0]):
            tag, kind, count, value = struct.unpack_from(order + "HHII", data, at + 2 + 12 * entry)
            size = {1: 1, 3: 2, 4: 4}.get(kind, 0)
            where = value if size * count > 4 else at + 2 + 12 * entry + 8
            if size:
                tags[tag] = struct.unpack_from("%s%d%s" % (order, count, " BH I"[size]), data, where)
    except struct.error as reason:
        raise Failure("%s: cut (%d bytes)" % (path, len(data))) from reason
    width, height, bytes_there = tags[256][0], tags[257][0], sum(tags[279])
    ends = [first + length for first, length in zip(tags[273], tags[279])]
    require(max(ends) <= len(data) and bytes_there == width * height * tags[277][0], "%s: half-written" % path)
    return width, height


class Trial:
    """One case's surroundings: its random numbers, its products, its options."""

    def __init__(self, rng, sample, options):
        self.rng = rng
        self.sample = sample
        self.options = options
        self.volume = next((sample / "3d").glob("CAZ*"))
        self.velocity = next((sample / "3d").glob("CAV*"))
        self.tiny = next((sample / "tiny" / "3d").glob("CAZ*"))
        self.number = 0

    def service(self, settings=DATA_ONLY, displaystate="Data", background=SMALL, **more):
        return Service(settings=settings, displaystate=displaystate, background=background, **more)

    @contextlib.contextmanager
    def running(self, **more):
        """A service that has drawn one image, so that nothing is waited for twice."""
        with self.service(**more) as service:
            self.ready(service)
            yield service

    def ready(self, service, deadline=LATER):
        """Until it has drawn an image. What is there when it starts is not drawn: on a busy machine the first volume
        may come too early."""
        end = time.monotonic() + deadline
        service.settle()
        while True:
            try:
                return service.wait_image(self.drop(service), 15)
            except Failure:
                if service.process.poll() is not None or time.monotonic() > end:
                    raise

    def next_key(self):
        self.number += 1
        return time_key(self.number)

    def drop(self, service, source=None):
        """A volume arrives; the end of its image's name."""
        return service.drop(source or self.volume, self.next_key())

    def terrain_settings(self):
        return "geolayer=%s\n" % (self.sample / "geo")


def check_images(service, endings=()):
    """Every image there is whole, and those of `endings` are there; how many there are."""
    names = [name for name in os.listdir(service.images) if not name.startswith(".")]
    for name in names:
        check_tiff(service.images / name)
    for ending in endings:
        require(any(name.endswith(ending) for name in names), "no image *%s" % ending)
    return len(names)


def wait_images(service, endings, deadline):
    """Until all of those images are there, and whole."""
    missing = set(endings)

    def arrived():
        if missing:
            there = {name[-len("_Z_000000000000.tiff"):] for name in os.listdir(service.images)}
            missing.intersection_update([ending for ending in missing if ending not in there])
        return not missing
    try:
        service.wait("%d images" % len(endings), arrived, deadline)
    except Failure as reason:
        raise Failure("%s; %d of %d are missing, such as *%s" % (reason, len(missing), len(endings),
                                                                next(iter(missing), ""))) from reason
    check_images(service, endings)


def hidden_files(folder):
    return [name for name in os.listdir(folder) if name.startswith(".")]


@contextlib.contextmanager
def mounted(mebibytes):
    """A file system of its own of that size; a folder."""
    if os.geteuid() != 0 or not shutil.which("mount"):
        raise Skipped("mounting needs root")
    folder = pathlib.Path(tempfile.mkdtemp(prefix="quor3d-campaign."))
    made = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=%dm,mode=755" % mebibytes, "quor3d", folder],
                          capture_output=True, text=True, check=False)
    if made.returncode != 0:
        folder.rmdir()
        raise Skipped("mounting is not allowed here: " + made.stderr.strip())
    try:
        yield folder
    finally:
        subprocess.run(["umount", "-l", folder], check=False)
        folder.rmdir()


def remount(folder, how):
    subprocess.run(["mount", "-o", "remount," + how, folder], check=True)


def wait_until(what, condition, deadline=SOON):
    end = time.monotonic() + deadline
    while not condition():
        require(time.monotonic() < end, "no %s within %d s" % (what, deadline))
        time.sleep(0.02)

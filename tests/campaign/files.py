# SPDX-License-Identifier: MIT
"""Cases of files that arrive: products, settings, caches."""
import os
import shutil
import time

from harness import DATA_ONLY, display_state
from trial import LATER, SMALL, SOON, check_images, require, wait_images, wait_until

# Radars and terrain only: what a terrain picture needs.
TERRAIN_ONLY = display_state((13, 44, 42, 43))


def damage(rng, data):
    """Bytes that are not the same: cut, changed, stretched, emptied or replaced."""
    way = rng.randrange(5)
    at = rng.randrange(max(1, len(data)))
    if way == 0:
        return data[:at]
    if way == 1 and data:
        return data[:at] + bytes([data[at] ^ (1 << rng.randrange(8))]) + data[at + 1:]
    if way == 2:
        return data[:at] + rng.randbytes(rng.randrange(1, 64)) + data[at:]
    return b"" if way == 3 else rng.randbytes(len(data) or 1)


def damaged_settings(trial):
    """Background settings that are emptied, cut, garbage or gone: images go on to where they went."""
    with trial.running() as service:
        path = service.root / "background.conf"
        good = path.read_bytes()
        ways = {"empty": b"", "garbage": trial.rng.randbytes(300), "cut": good[:trial.rng.randrange(5, 12)],
                "another group": b"[NOTHING]\na=1\n", "gone": None}
        endings = []
        for way, content in ways.items():
            if content is None:
                path.unlink()
            else:
                path.write_bytes(content)
            first = len(service.lines)
            endings.append(trial.drop(service))
            try:
                service.wait_image(endings[-1], SOON)
            finally:
                path.write_bytes(good)
            require(service.count_lines("E: ", first) >= 1, "%s settings: no error line" % way)
            endings.append(trial.drop(service))
            service.wait_image(endings[-1], SOON)
        check_images(service, endings)
        return "%s: an image each, and an error line" % ", ".join(ways)


def damaged_terrain_cache(trial):
    """Cached terrain that is damaged in every way gives the same picture, and nothing ends the service."""
    service = trial.service(settings=trial.terrain_settings() + TERRAIN_ONLY)
    with service:
        trial.ready(service)
        cache = service.root / "home" / ".quor3d" / "cache" / "terrain"
        blocks = sorted(path for path in cache.rglob("*") if path.is_file())
        require(blocks, "no cache below %s" % cache)
        reference = read_image(service, trial)
        rounds = 6
        for _ in range(rounds):
            service.stop()
            for path in trial.rng.sample(blocks, len(blocks) // 2):
                path.write_bytes(damage(trial.rng, path.read_bytes()))
            left, right = trial.rng.sample([path for path in blocks if path.suffix != ".png"], 2)
            swap(left, right)
            swap(left.with_name(left.name + ".png"), right.with_name(right.name + ".png"))
            service.start()
            trial.ready(service)
            require(read_image(service, trial) == reference, "another picture after damage")
        return "%d rounds over %d files, the picture stayed the same" % (rounds, len(blocks))


def swap(left, right):
    between = left.with_name("between")
    left.rename(between)
    right.rename(left)
    between.rename(right)


def read_image(service, trial):
    """The bytes of an image of one and the same time."""
    key = "210101000000"
    for path in (service.volumes / ("CAZ%s.cap" % key), *service.images.glob("*_Z_%s.tiff" % key)):
        path.unlink(missing_ok=True)
    service.settle()
    ending = service.drop(trial.volume, key)
    with open(service.wait_image(ending, LATER), "rb") as image:
        return image.read()


def issued_again(trial):
    """A volume that is issued again under its name, by rename, by removal and in place, is drawn again."""
    with trial.running() as service:
        key = trial.next_key()
        path = service.volumes / ("CAZ%s.cap" % key)
        ending = service.drop(trial.volume, key)
        image = service.wait_image(ending, SOON)
        first = trial.volume.read_bytes()
        # The header as it was, another storm behind it.
        storms = [first[:640] + bytes(trial.rng.choices((1, 120, 160), k=len(first) - 640)) for _ in range(3)]
        for way, storm in zip(("rename", "removal", "in place"), storms):
            service.settle()
            before = os.stat(image).st_ino  # two storms of noise may look the same
            if way == "in place":
                path.write_bytes(storm)
            else:
                hidden = service.volumes / ".part"
                hidden.write_bytes(storm)
                if way == "removal":
                    path.unlink()
                hidden.rename(path)
            wait_until("new image after a volume issued again by %s" % way,
                       lambda: os.stat(image).st_ino != before, LATER)  # noqa: B023
        check_images(service, [ending])
        return "by rename, by removal and in place: drawn again"


def slow_writers(trial):
    """Files that grow in place, in pieces, among each other: each is drawn, once, when it is whole."""
    with trial.running(loglevel=2) as service:
        data = trial.volume.read_bytes()
        service.settle()  # the line of the first image comes after its file
        first = len(service.lines)
        files, endings = {}, []
        for _ in range(20):
            key = trial.next_key()
            files[open(service.volumes / ("CAZ%s.cap" % key), "wb", buffering=0)] = 0
            endings.append("_Z_%s.tiff" % key)
        while files:
            file = trial.rng.choice(list(files))
            length = trial.rng.choice((1, 300, 640, 4096, 65536))
            file.write(data[files[file]:files[file] + length])
            files[file] += length
            if files[file] >= len(data):
                file.close()
                del files[file]
            time.sleep(0.005)
        wait_images(service, endings, LATER)
        service.settle()
        drawn = service.count_lines("File visualized in", first)
        require(drawn == len(endings), "%d images drawn of %d files" % (drawn, len(endings)))
        return "%d files, %d images drawn" % (len(endings), drawn)


def short_files(trial):
    """Thousands of short files, deleted while they wait: a good volume among them comes in time, the log is short."""
    with trial.running() as service:
        first = len(service.lines)
        for _ in range(trial.options.files):
            (service.volumes / ("CAX%s.cap" % trial.next_key())).write_bytes(b"short")
        waited = []
        for number, path in enumerate(list(service.volumes.glob("CAX*"))):
            path.unlink()
            if number % max(1, trial.options.files // 4) == 0:
                began = time.monotonic()
                service.wait_image(trial.drop(service), LATER)
                waited.append(time.monotonic() - began)
        service.settle()
        lines = len(service.lines) - first
        require(lines < 200, "%d log lines" % lines)
        check_images(service)
        return "%d files, a good one among them after %.1f s at most, %d log lines" % (
            trial.options.files, max(waited), lines)


def burst(trial):
    """Thousands of volumes at once: an image of each."""
    with trial.running(background="width=64\nheight=48\n") as service:
        began = time.monotonic()
        hidden = service.root / "burst"
        hidden.mkdir()
        endings = []
        for _ in range(trial.options.files):
            key = trial.next_key()
            shutil.copy(trial.tiny, hidden / ("CAZ%s.cap" % key))
            endings.append("_Z_%s.tiff" % key)
        for name in os.listdir(hidden):
            (hidden / name).rename(service.volumes / name)
        wait_images(service, endings, 60 + trial.options.files // 4)
        seconds = time.monotonic() - began
        return "%d volumes, all drawn, %.0f a second" % (len(endings), len(endings) / seconds)

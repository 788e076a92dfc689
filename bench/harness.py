# SPDX-License-Identifier: MIT
"""Runs quor3dd over a scratch folder and watches it from outside: files in, images and log lines out."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BINARIES = ROOT / "build" / "release" / "bin"
DEADLINE = 180


def display_state(hidden):
    """A display state named "Data" without the layers of those keys."""
    return ("\n[DISPLAYSTATE]\nDISPLAYSTATES\\size=2\nDISPLAYSTATES\\1\\displayStateName=Custom\n"
            "DISPLAYSTATES\\2\\displayStateName=Data\n") + "".join(
        "DISPLAYSTATES\\2\\displayStateLayerVisible%d=%s\nDISPLAYSTATES\\2\\displayStateLayerOpacity%d=100\n"
        % (key, "false" if key in hidden else "true", key) for key in (10, 40, 11, 12, 13, 44, 41, 42, 43))


# As a plain script would draw it: no terrain, grid, rings, labels, outline or flat layer.
DATA_ONLY = display_state((11, 13, 44, 41, 42, 43))


# What packaged defaults may change and the figures are measured with, so that they stay comparable.
PINNED_GENERAL = "datashrink_h=4\n"
PINNED_PRODUCT = ("\n[PRODUCT%20CAPPI%20Z]\nrendering=surface\ncolormap=Default\nsurface\\size=1\n"
                  "surface\\1\\isovalue=-31.5\nsurface\\1\\opacity=100\n")


class Failure(Exception):
    """The service did not do what was waited for."""


def make_sample(folder, *arguments):
    """Runs quor3d-sample; its output folder."""
    subprocess.run([BINARIES / "quor3d-sample", "--output", folder, *arguments], check=True, stdout=subprocess.DEVNULL)
    return pathlib.Path(folder)


def build():
    for command in (["cmake", "--preset", "release"],
                    ["cmake", "--build", "--preset", "release", "--target", "quor3dd", "quor3d-sample"]):
        subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.DEVNULL)


class Service:
    """quor3dd in the foreground with a home of its own; a context manager. Lines of its log are kept with
    the time at which they arrived."""

    def __init__(self, loglevel=0, displaystate="Default", settings="", product2d="(none)", background="",
                 image_format="TIFF"):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="quor3d-bench."))
        self.volumes, self.flat, self.images = (self.root / name for name in ("3d", "2d", "images"))
        self.conf = self.root / "home" / ".config" / "QUOR"
        system = self.root / "system" / "QUOR"
        for folder in (self.volumes, self.flat, self.images, self.conf, system):
            folder.mkdir(parents=True)
        for packaged in (ROOT / "share").rglob("*.conf"):
            shutil.copy(packaged, system)
        pinned = "" if "datashrink_h" in settings else PINNED_GENERAL
        product = "" if "PRODUCT%20CAPPI%20Z" in settings else PINNED_PRODUCT
        (self.conf / "QUOR3D.conf").write_text(
            "[GENERAL]\ndata3d=%s\ndata2d=%s\n%s%s%s" % (self.volumes, self.flat, pinned, settings, product))
        (self.root / "background.conf").write_text(
            "[BACKGROUND]\nactivated=true\ndirectory=%s\noutputformat=%s\ndisplaystate=%s\n%sproducts\\size=4\n%s"
            % (self.images, image_format, displaystate, background,
               "".join("products\\%d\\product=%s\n" % (i, product2d) for i in range(1, 5))))
        self.status_file = self.root / "home" / ".quor3d" / "status.json"
        self.extension = {"TIFF": "tiff", "PNG": "png", "JPEG": "jpg"}[image_format]
        self.loglevel = loglevel
        self.lines = []
        self.process = None

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()
        shutil.rmtree(self.root, ignore_errors=True)

    def environment(self):
        return {"HOME": str(self.root / "home"), "PATH": os.environ["PATH"], "LANG": "C.UTF-8",
                "XDG_CONFIG_DIRS": str(self.root / "system"), "TMPDIR": str(self.root),
                "QUOR3D_BG_SETTINGS": str(self.root / "background.conf")}

    def start(self, **popen):
        """Over the same folders as before, when it ran before. Takes what subprocess.Popen takes."""
        self.status_file.unlink(missing_ok=True)
        self.started = time.monotonic()
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.PIPE, **popen}
        self.process = subprocess.Popen([BINARIES / "quor3dd", "--loglevel=%d" % self.loglevel],
                                        env=self.environment(), **streams)
        if streams["stderr"] == subprocess.PIPE:
            threading.Thread(target=self._read, args=(self.process.stderr,), daemon=True).start()

    def stop(self):
        self.process.terminate()
        try:
            self.process.wait(30)
        except subprocess.TimeoutExpired:
            self.kill()

    def kill(self):
        self.process.kill()
        self.process.wait()

    def _read(self, stream):
        for line in stream:
            self.lines.append((time.monotonic(), line.decode(errors="replace").rstrip()))

    def wait(self, what, condition, deadline=DEADLINE):
        """The value of the condition once it is true."""
        end = time.monotonic() + deadline
        while time.monotonic() < end:
            value = condition()
            if value:
                return value
            if self.process.poll() is not None:
                raise Failure("the service ended: %s" % [line for _, line in self.lines[-3:]])
            time.sleep(0.001)
        raise Failure("no %s within %d s" % (what, deadline))

    def wait_line(self, text, first=0, deadline=DEADLINE):
        """The index of the first line from `first` on that contains the text."""
        return self.wait("'%s' in the log" % text, lambda: next(
            ([i] for i in range(first, len(self.lines)) if text in self.lines[i][1]), None), deadline)[0]

    def count_lines(self, text, first=0):
        return sum(text in line for _, line in self.lines[first:])

    def settle(self):
        """Until the service waits for work: it watches, and has used no processor time for half a second."""
        self.wait("the status of the service", self.status_file.exists)
        before = 0
        while before == 0 or before != self.ticks():
            before = self.ticks()
            time.sleep(0.5)

    def drop(self, source, key):
        """A volume appears at once, under a name with that time key; the image that it will become."""
        hidden = self.volumes / ".part"
        shutil.copy(source, hidden)
        hidden.rename(self.volumes / ("CAZ%s.cap" % key))
        return "_Z_%s.%s" % (key, self.extension)

    def wait_image(self, ending, deadline=DEADLINE):
        return self.wait("image *" + ending, lambda: next(
            (e.path for e in os.scandir(self.images) if e.name.endswith(ending)), None), deadline)

    def wait_images(self, count):
        self.wait("%d images" % count, lambda: sum(
            not e.name.startswith(".") for e in os.scandir(self.images)) >= count)

    def status(self, key):
        for line in open("/proc/%d/status" % self.process.pid):
            if line.startswith(key + ":"):
                return int(line.split()[1])
        return 0

    def ticks(self):
        fields = open("/proc/%d/stat" % self.process.pid).read().rpartition(")")[2].split()
        return int(fields[11]) + int(fields[12])

    def switches(self):
        """Times that any of its threads gave the processor away by itself, that is, slept and was woken."""
        total = 0
        for task in pathlib.Path("/proc/%d/task" % self.process.pid).iterdir():
            for line in (task / "status").read_text().splitlines():
                if line.startswith("voluntary_ctxt_switches"):
                    total += int(line.split()[1])
        return total


def time_key(number):
    """A time key of its own for every number."""
    return "2108%02d%02d%02d%02d" % (1 + number // 86400, number // 3600 % 24, number // 60 % 60, number % 60)

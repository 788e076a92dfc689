#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""usage: gallery_page_test.py QUOR3D
Opens the page that `quor3d gallery` writes in a real browser and uses it. A picture's width says which it is."""
import functools
import http.server
import os
import pathlib
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import urllib.parse
import zlib

from browser import Browser, missing

SKIPPED = 77
LEFT, RIGHT, HOME, END = "\ue012", "\ue014", "\ue011", "\ue010"
HOSTILE = "<img src=x onerror='window.harm=1'>\"&%41#?"
SHOWN = "const image = document.querySelector('#stage img'); return image ? image.naturalWidth : 0"
IS_SHOWN = "const image = document.querySelector('#stage img'); return image && image.naturalWidth === arguments[0]"
NAMES = "return [...document.querySelectorAll('.tile .name')].map(name => name.textContent)"


class CountingHandler(http.server.SimpleHTTPRequestHandler):
    asked = 0

    def log_message(self, *_):
        pass

    def do_GET(self):
        CountingHandler.asked += self.path.split("?")[0].endswith(".png")
        super().do_GET()


def png(width, height=90):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))
    rows = (b"\0" + b"\x30\x80\xc0" * width) * height
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def tiff(width, height=90):
    entries = [(256, 4, 1, width), (257, 4, 1, height), (258, 3, 1, 8), (259, 3, 1, 1), (262, 3, 1, 1),
               (273, 4, 1, 8 + 2 + 12 * 8 + 4), (277, 3, 1, 1), (279, 4, 1, width * height)]
    directory = struct.pack("<H", len(entries)) + b"".join(struct.pack("<HHII", *entry) for entry in entries)
    return b"II*\0" + struct.pack("<I", 8) + directory + b"\0\0\0\0" + b"\x80" * (width * height)


def publish(folder, name, content):
    (folder / ".part").write_bytes(content)
    (folder / ".part").rename(folder / name)


def key(number):
    return "210511%02d%02d00" % (12 + number // 60, number % 60)


def choose(browser, select, value):
    browser.run("const select = document.getElementById(arguments[0]); select.value = arguments[1];"
                "select.dispatchEvent(new Event('change'))", select, value)


def show_and_step(browser):
    """The newest picture first; keys and the slider move through the others."""
    browser.wait("newest picture", IS_SHOWN, 105)
    assert browser.run("return document.getElementById('time').textContent") == "2021-05-11 12:05:00"
    browser.press(LEFT)
    browser.wait("step back", IS_SHOWN, 104)
    browser.run("document.getElementById('slider').focus()")
    browser.press(LEFT)
    browser.wait("step with the slider in use", IS_SHOWN, 103)
    browser.press(HOME)
    browser.wait("oldest picture", IS_SHOWN, 100)
    browser.run("const slider = document.getElementById('slider'); slider.value = 2;"
                "slider.dispatchEvent(new Event('input'))")
    browser.wait("picture of the slider", IS_SHOWN, 102)
    browser.press(RIGHT)
    browser.wait("step forward", IS_SHOWN, 103)


def follow(browser, folder):
    """New pictures come by themselves, and do not take away what is looked at."""
    publish(folder, "KLOT_Z_%s.png" % key(6), png(106))
    browser.wait("seven pictures", "return document.getElementById('position').textContent === '4 of 7'")
    assert browser.run(SHOWN) == 103
    browser.press(END)
    browser.wait("new picture", IS_SHOWN, 106)
    publish(folder, "KLOT_Z_%s.png" % key(7), png(107))
    browser.wait("newest picture by itself", IS_SHOWN, 107)
    publish(folder, "KLOT_Z_%s.png" % key(7), png(177))
    browser.wait("picture that was drawn again", IS_SHOWN, 177)
    (folder / ("KLOT_Z_%s.png" % key(7))).unlink()
    browser.wait("the one before a removed picture", IS_SHOWN, 106)
    # A loop over the last minutes, and one that runs.
    choose(browser, "window", "1")
    browser.press(" ")
    browser.wait("motion past the end", "return document.getElementById('position').textContent === '2 of 7'")
    browser.press(" ")
    assert browser.run("return document.getElementById('play').getAttribute('aria-pressed')") == "false"


def show_others(browser):
    """Other series by name, whatever the name holds; TIFF as copies."""
    choose(browser, "site", HOSTILE)
    browser.wait("series of the strange name", IS_SHOWN, 140)
    assert HOSTILE + " · Z" in browser.run(NAMES), browser.run(NAMES)
    assert browser.run("return [window.harm, document.querySelectorAll('.tile').length,"
                       "document.querySelectorAll('#tiles img').length]") == [None, 4, 4]
    choose(browser, "site", "KLOT")
    choose(browser, "configuration", "V")
    browser.wait("copy of a TIFF", IS_SHOWN, 121)
    choose(browser, "configuration", "Z")
    choose(browser, "view", "From the south")
    browser.wait("further view", IS_SHOWN, 130)
    browser.wait("small pictures", "return [...document.querySelectorAll('#tiles img')].every(i => i.naturalWidth)")
    browser.phone()
    assert browser.run("return document.documentElement.scrollWidth") <= 390


def show_thousands(quor3d, browser, root):
    """Many pictures behind a web server, opened at one of them."""
    folder = root / "many"
    folder.mkdir()
    for number in range(300):
        for site in range(10):
            publish(folder, "S%d_Z_%s.png" % (site, key(number)), png(100 + site, 1))
    subprocess.run([quor3d, "gallery", folder, "-o", root / "page"], check=True, stdout=subprocess.DEVNULL)
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(CountingHandler, directory=root))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    browser.open("http://127.0.0.1:%d/page/index.html#S7/Z" % server.server_port)
    browser.wait("picture of the seventh site", IS_SHOWN, 107)
    assert browser.run("return document.getElementById('position').textContent") == "300 of 300"
    assert browser.run("return document.querySelectorAll('*').length") < 400
    # A hundred steps at once: quick, and not a hundred pictures over the network.
    waited = browser.run("""const began = performance.now();
        for (let i = 0; i < 100; ++i) document.getElementById('back').click();
        return performance.now() - began""")
    assert waited < 1000, waited
    browser.wait("picture a hundred steps back",
                 "return document.querySelector('#stage img').src.includes(arguments[0])", key(199))
    assert CountingHandler.asked < 12, CountingHandler.asked
    browser.open("about:blank")
    server.shutdown()


def run(quor3d, root):
    folder = root / "pictures"
    folder.mkdir()
    for number in range(6):
        publish(folder, "KLOT_Z_%s.png" % key(number), png(100 + number))
    for number in range(2):
        publish(folder, "KLOT_V_%s.tiff" % key(number), tiff(120 + number))
    publish(folder, "KLOT_Z_%s_From the south.png" % key(0), png(130))
    publish(folder, "%s_Z_%s.png" % (HOSTILE, key(0)), png(140))
    gallery = subprocess.Popen([quor3d, "gallery", folder, "--watch", "--refresh", "1"], stdout=subprocess.PIPE,
                               text=True)
    try:
        page = gallery.stdout.readline().strip()
        assert page == str(folder / "index.html"), page
        with Browser() as browser:
            browser.open("file://" + urllib.parse.quote(page) + "#KLOT/Z")
            show_and_step(browser)
            follow(browser, folder)
            show_others(browser)
            show_thousands(quor3d, browser, root)
            complaints = browser.complaints()
            assert not complaints, complaints
    finally:
        gallery.send_signal(signal.SIGTERM)
        assert gallery.wait(20) == 0


if __name__ == "__main__":
    if missing():
        print("skipped, not installed: " + missing())
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory(prefix="gallery-test.") as scratch:
        run(os.path.abspath(sys.argv[1]), pathlib.Path(scratch))
    print("passed")

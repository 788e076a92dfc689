# SPDX-License-Identifier: MIT
"""A headless Chromium, driven by the WebDriver protocol."""
import base64
import json
import os
import re
import shutil
import subprocess
import tempfile
import time
import urllib.error
import urllib.request


def missing():
    """What is not installed, or None."""
    absent = [name for name in ("chromium", "chromedriver") if not shutil.which(name)]
    return ", ".join(absent) + " (packages chromium and chromium-driver)" if absent else None


class Browser:
    """A context manager; `run` evaluates a function body in the page."""

    def __init__(self, width=1280, height=1000):
        self.size = (width, height)

    def __enter__(self):
        self.profile = tempfile.mkdtemp(prefix="gallery-browser.")
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                       text=True)
        port = None
        while port is None:
            line = self.driver.stdout.readline()
            if not line:
                raise RuntimeError("chromedriver does not start")
            port = re.search(r"successfully on port (\d+)", line)
        self.root = "http://127.0.0.1:%s" % port.group(1)
        arguments = ["--headless=new", "--disable-gpu", "--hide-scrollbars", "--disable-dev-shm-usage",
                     "--user-data-dir=" + self.profile, "--window-size=%d,%d" % self.size]
        if os.geteuid() == 0:
            arguments.append("--no-sandbox")
        wanted = {"capabilities": {"alwaysMatch": {"goog:chromeOptions": {"args": arguments},
                                                   "goog:loggingPrefs": {"browser": "ALL"}}}}
        self.session = "/session/" + self.call("POST", "/session", wanted)["sessionId"]
        return self

    def __exit__(self, *_):
        try:
            self.call("DELETE", self.session)
        finally:
            self.driver.terminate()
            self.driver.wait(20)
            shutil.rmtree(self.profile, ignore_errors=True)

    def call(self, method, path, body=None):
        data = json.dumps(body if body is not None else {}).encode() if method == "POST" else None
        request = urllib.request.Request(self.root + path, data, {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=60) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(error.read().decode(errors="replace")) from error

    def open(self, url):
        self.call("POST", self.session + "/url", {"url": url})

    def run(self, script, *arguments):
        return self.call("POST", self.session + "/execute/sync", {"script": script, "args": list(arguments)})

    def press(self, *keys):
        """Special keys by their code points in the protocol."""
        actions = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self.call("POST", self.session + "/actions",
                  {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def phone(self, width=390, height=844):
        self.call("POST", self.session + "/goog/cdp/execute",
                  {"cmd": "Emulation.setDeviceMetricsOverride",
                   "params": {"width": width, "height": height, "deviceScaleFactor": 2, "mobile": True}})

    def picture(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.call("GET", self.session + "/screenshot")))

    def wait(self, what, script, *arguments, seconds=20):
        """The script's value once it is true."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            value = self.run(script, *arguments)
            if value:
                return value
            time.sleep(0.02)
        raise AssertionError("no %s within %d s; the page says: %s" % (what, seconds, self.run(
            "return document.body.innerText.slice(0, 500)")))

    def complaints(self):
        """What the page wrote to the console."""
        return [entry["message"] for entry in self.call("POST", self.session + "/se/log", {"type": "browser"})]

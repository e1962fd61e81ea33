"""A headless Chromium, driven over its DevTools protocol with Python's own library."""
import base64
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

FAULTS = ("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Log.entryAdded")


def find_browser():
    return next(filter(None, map(shutil.which, ("chromium", "google-chrome"))), None)


def wait_until(condition):
    end = time.monotonic() + 60
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.02)
    raise RuntimeError("waited in vain")


class Page:
    """The page of a browser of its own; `faults`: its messages, errors and outside requests so far."""

    def __init__(self):
        self.faults, self.last_id, self.session, self.folder = [], 0, {}, tempfile.mkdtemp()
        self.page, self.loaded = "about:blank", False
        command_end, self.commands = os.pipe()
        answers, answer_end = os.pipe()
        self.process = subprocess.Popen(  # it reads from descriptor 3 and writes to 4
            ["sh", "-c", f'exec "$@" 3<&{command_end} 4>&{answer_end}', "sh", find_browser(),
             "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--remote-debugging-pipe", f"--user-data-dir={self.folder}", "about:blank"],
            pass_fds=(command_end, answer_end), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for end in (command_end, answer_end):
            os.close(end)
        self.answers, self.unread = os.fdopen(answers, "rb"), b""
        target = self.call("Target.createTarget", url="about:blank")
        self.session = self.call("Target.attachToTarget", flatten=True, **target)
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        self.resize(1280, 800)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        os.close(self.commands)
        self.answers.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _receive(self):
        while b"\0" not in self.unread:
            self.unread += self.answers.read1(1 << 16) or sys.exit("the browser is gone")
        message, self.unread = self.unread.split(b"\0", 1)
        message = json.loads(message)
        if "method" in message:
            self._note(message)
        return message

    def _note(self, event):
        """Keeps what an event says."""
        self.loaded = self.loaded or event["method"] == "Page.loadEventFired"
        url = event["params"].get("request", {}).get("url", "file:")
        if event["method"] in FAULTS or not url.startswith(("file:", "data:", "blob:", "about:")):
            self.faults.append(json.dumps(event)[:400])

    def call(self, method, **parameters):
        self.last_id += 1
        command = {"id": self.last_id, "method": method, "params": parameters, **self.session}
        os.write(self.commands, json.dumps(command).encode() + b"\0")
        while (message := self._receive()).get("id") != self.last_id:
            pass
        if "error" in message:
            raise RuntimeError(f"{method}: {message['error']}")
        return message["result"]

    def run(self, script):
        """The value of a JavaScript expression."""
        answer = self.call("Runtime.evaluate", expression=script, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{script}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def _load(self, url):
        self.loaded = False
        self.call("Page.navigate", url=url)
        while not self.loaded:
            self._receive()

    def open(self, url, ready="document.body?.dataset.ready"):
        """Loads an address and waits for a condition; the report says itself when it is ready."""
        page = url.split("#")[0]
        if page == self.page:  # another fragment alone would load nothing
            self._load("about:blank")
        self.page = page
        self._load(url)
        wait_until(lambda: self.run(ready))

    def resize(self, width, height):
        size = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500}
        self.call("Emulation.setDeviceMetricsOverride", **size)

    def screenshot(self, file):
        file.write_bytes(base64.b64decode(self.call("Page.captureScreenshot")["data"]))

    def mouse(self, kind, x, y):
        button = {} if kind == "mouseMoved" else {"button": "left", "clickCount": 1}
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **button)

    def click(self, x, y):
        for kind in ("mouseMoved", "mousePressed", "mouseReleased"):
            self.mouse(kind, x, y)

    def click_on(self, selector):
        self.click(*self.run(f"""(() => {{
          const element = document.querySelector({json.dumps(selector)});
          element.scrollIntoView({{block: 'center', inline: 'center'}});
          const box = element.getBoundingClientRect();
          return [box.left + box.width / 2, box.top + box.height / 2]; }})()"""))

    def press(self, key):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key)

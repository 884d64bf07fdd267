"""A headless Chromium, driven over a pair of pipes. Standard library only."""

import json
import os
import shutil
import subprocess
import tempfile

# Nothing is fetched: pages under test are local files, and the browser's own errands are turned off.
FLAGS = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage",
         "--hide-scrollbars", "--remote-debugging-pipe")


def executable():
    """Path of an installed browser, or None."""
    for name in ("chromium", "chromium-browser", "google-chrome"):
        path = shutil.which(name)
        if path:
            return path
    return None


class Browser:
    """One tab. Use as a context manager."""

    def __init__(self):
        self._profile = tempfile.mkdtemp(prefix="omtree-browser-")
        to_browser, self._to = os.pipe()
        self._from, from_browser = os.pipe()

        def connect():
            # The browser reads commands from 3 and writes answers to 4; the pipes may stand on these numbers already.
            source, target = os.dup2(to_browser, 103), os.dup2(from_browser, 104)
            os.dup2(source, 3)
            os.dup2(target, 4)

        self._process = subprocess.Popen(
            [executable(), *FLAGS, f"--user-data-dir={self._profile}", "about:blank"], preexec_fn=connect,
            close_fds=False, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self._rest = b""
        self._number = 0
        self._session = None
        self.problems = []  # exceptions and errors that pages reported
        targets = self.call("Target.getTargets")["targetInfos"]
        page = next(target for target in targets if target["type"] == "page")
        self._session = self.call("Target.attachToTarget", targetId=page["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        os.close(self._to)
        os.close(self._from)
        shutil.rmtree(self._profile, ignore_errors=True)

    def _read(self):
        while b"\0" not in self._rest:
            piece = os.read(self._from, 1 << 16)
            if not piece:
                raise RuntimeError("the browser has gone away")
            self._rest += piece
        message, self._rest = self._rest.split(b"\0", 1)
        message = json.loads(message)
        method, params = message.get("method"), message.get("params", {})
        if method == "Runtime.exceptionThrown":
            self.problems.append(params["exceptionDetails"].get("text", "exception"))
        elif method == "Log.entryAdded" and params["entry"]["level"] == "error":
            self.problems.append(params["entry"]["text"])
        elif method == "Network.requestWillBeSent":
            url = params["request"]["url"]
            if not url.startswith(("file:", "data:", "about:")):
                self.problems.append("fetches " + url)
        return message

    def call(self, method, **params):
        self._number += 1
        message = {"id": self._number, "method": method, "params": params}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._to, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._read()
            if answer.get("id") == self._number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def open(self, path, width, dark):
        """Loads a file in a window of that many pixels, in the light or the dark scheme."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=800, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.call("Page.navigate", url="file://" + os.path.abspath(path))
        while self._read().get("method") != "Page.loadEventFired":
            pass

    def ask(self, expression):
        """Value of a script expression in the page."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(str(result["exceptionDetails"]))
        return result["result"].get("value")

    def screenshot(self, path):
        import base64
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.call("Page.captureScreenshot", captureBeyondViewport=True)["data"]))

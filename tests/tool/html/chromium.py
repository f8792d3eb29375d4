"""Drives a headless Chromium through its debugging pipe: what it shows, measures and asks the network for."""
import base64
import json
import os
import select
import shutil
import signal
import subprocess
import time

NAMES = ["chromium", "chromium-browser", "google-chrome"]


def find():
    """The path of an installed Chromium, or None."""
    return next((path for path in map(shutil.which, NAMES) if path), None)


class Chromium:
    """A browser with a profile in FOLDER and one page. To be used in a with statement.

    No name resolves in it, so that it could not reach another machine if a page asked for that.
    """

    def __init__(self, path, folder, timeout=600):
        self.timeout = timeout
        self.requests = []  # the URLs that were asked for, the pages' own included
        self._number = 0
        self._received = b""
        to_browser, self._write = os.pipe()
        self._read, from_browser = os.pipe()
        for end in (self._read, self._write):
            os.set_inheritable(end, False)
        # The browser reads commands from descriptor 3 and answers on 4. Commands reach it through a shell, which alone
        # can put the pipes there without disturbing descriptors that this process has in use.
        arguments = [path, "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--no-first-run", "--disable-background-networking", "--disable-component-update",
                     "--disable-sync", "--hide-scrollbars", "--host-resolver-rules=MAP * ~NOTFOUND",
                     "--remote-debugging-pipe", f"--user-data-dir={folder}", "about:blank"]
        self._process = subprocess.Popen(
            ["bash", "-c", f'exec "$@" 3<&{to_browser} 4>&{from_browser}', "bash", *arguments],
            pass_fds=(to_browser, from_browser), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, start_new_session=True,
            env=dict(os.environ, HOME=str(folder), XDG_CONFIG_HOME=str(folder), XDG_CACHE_HOME=str(folder)))
        os.close(to_browser)
        os.close(from_browser)
        self._session = None

    def __enter__(self):
        try:
            target = self.call("Target.createTarget", url="about:blank")["targetId"]
            self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
            for domain in ("Page", "Network", "Runtime", "Log"):
                self.call(f"{domain}.enable")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        try:
            self._session = None
            self.call("Browser.close")
            self._process.wait(timeout=120)
        except (OSError, RuntimeError, TimeoutError, subprocess.TimeoutExpired):
            # The browser is several processes, which are a group of their own.
            os.killpg(self._process.pid, signal.SIGKILL)
            self._process.wait()
        os.close(self._read)
        os.close(self._write)

    def call(self, method, **parameters):
        """Runs a command of the debugging protocol and returns its result."""
        self._number += 1
        command = {"id": self._number, "method": method, "params": parameters}
        if self._session:
            command["sessionId"] = self._session
        os.write(self._write, json.dumps(command).encode() + b"\0")
        deadline = time.monotonic() + self.timeout
        while True:
            message = self._receive(deadline)
            if message.get("id") == self._number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]

    def wait_for(self, event):
        deadline = time.monotonic() + self.timeout
        while self._receive(deadline).get("method") != event:
            pass

    def _receive(self, deadline):
        while b"\0" not in self._received:
            ready, _, _ = select.select([self._read], [], [], max(0, deadline - time.monotonic()))
            piece = os.read(self._read, 1 << 20) if ready else b""
            if not piece:
                raise TimeoutError("Chromium does not answer")
            self._received += piece
        text, self._received = self._received.split(b"\0", 1)
        message = json.loads(text)
        if message.get("method") == "Network.requestWillBeSent":
            self.requests.append(message["params"]["request"]["url"])
        return message

    def open(self, path, width, height=900, dark=False, medium="screen"):
        """Shows a file in a window of that size."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", media=medium,
                  features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.call("Page.navigate", url=path.resolve().as_uri())
        self.wait_for("Page.loadEventFired")

    def evaluate(self, expression):
        """The value of a JavaScript expression, which runs whatever the page's policy is."""
        done = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in done:
            raise RuntimeError(f"{expression}: {done['exceptionDetails']}")
        return done["result"].get("value")

    def screenshot(self):
        """The whole page as PNG, also what is below the window."""
        shot = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=True)
        return base64.b64decode(shot["data"])

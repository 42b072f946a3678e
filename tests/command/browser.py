"""Chromium without a window, driven through a pipe in its DevTools protocol."""
import base64
import json
import os
import pathlib
import subprocess
import tempfile
import time

TOLD = ("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Log.entryAdded")


class Browser:
    def __init__(self, program):
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        its_commands, self.commands = os.pipe()
        self.answers, its_answers = os.pipe()
        # It reads from descriptor 3 and answers on 4.
        self.process = subprocess.Popen(
            ["sh", "-c", f'exec "$0" "$@" 3<&{its_commands} 4>&{its_answers}', program, "--headless", "--no-sandbox",
             "--disable-gpu", "--disable-dev-shm-usage", "--remote-debugging-pipe",
             f"--user-data-dir={self.folder.name}", "about:blank"],
            pass_fds=(its_commands, its_answers), stderr=subprocess.DEVNULL)
        os.close(its_commands)
        os.close(its_answers)
        self.number, self.session, self.buffer = 0, None, b""
        self.complaints = []  # what the page's console and the browser said
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.process.kill()
        self.process.wait()
        self.folder.cleanup()

    def _message(self):
        while b"\0" not in self.buffer:
            data = os.read(self.answers, 1 << 20)
            if not data:
                raise RuntimeError("the browser went away")
            self.buffer += data
        text, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(text)

    def call(self, method, **parameters):
        self.number += 1
        request = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        os.write(self.commands, json.dumps(request).encode() + b"\0")
        while True:
            message = self._message()
            if message.get("method") in TOLD:
                self.complaints.append(message["params"])
            if message.get("id") == self.number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def wait_for(self, expression, seconds=60):
        end = time.monotonic() + seconds
        while not self.evaluate(f"Boolean({expression})"):
            if time.monotonic() > end:
                raise RuntimeError(f"waited in vain for {expression}")
            time.sleep(0.05)

    def show(self, page, width, height, scheme="light", scale=1):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale,
                  mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.call("Page.navigate", url=pathlib.Path(page).resolve().as_uri())
        self.wait_for("document.querySelector('.system svg')")

    def click(self, x, y):
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", clickCount=1)

    def press(self, key, text=None):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key, **({"text": text} if text else {}))

    def picture(self, path):
        png = self.call("Page.captureScreenshot", format="png")["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(png))

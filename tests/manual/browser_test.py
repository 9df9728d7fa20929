#!/usr/bin/env python3
"""Opens the manual's HTML file in headless Chromium and checks it as a reader would: browser_test.py FILE

Every link leads to a place in the file, nothing is wider than its page on a desk and on a phone, the search finds
every member and task, all pictures are drawn, and nothing is fetched.
"""

import json
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request


class Browser:
    """A session of Chromium, steered by chromedriver over the WebDriver protocol."""

    def __init__(self, folder):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        self.url = f"http://127.0.0.1:{port}"
        self.driver = subprocess.Popen(["chromedriver", f"--port={port}"], stdout=subprocess.DEVNULL)
        flags = ["--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run", "--disable-quic",
                 "--disable-background-networking", "--disable-component-update", "--disable-sync",
                 f"--user-data-dir={folder}"]
        options = {"capabilities": {"alwaysMatch": {"goog:chromeOptions": {"args": flags}}}}
        deadline = time.monotonic() + 60
        while True:
            try:
                self.session = self.send("/session", options)["sessionId"]
                return
            except (OSError, KeyError):
                if time.monotonic() > deadline:
                    self.driver.kill()
                    raise
                time.sleep(0.2)

    def send(self, path, body=None, method="POST"):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.url + path, data, {"Content-Type": "application/json"}, method=method)
        with urllib.request.urlopen(request, timeout=120) as answer:
            return json.load(answer)["value"]

    def open(self, url):
        self.send(f"/session/{self.session}/url", {"url": url})

    def size(self, width, height):
        self.send(f"/session/{self.session}/window/rect", {"width": width, "height": height})

    def run(self, script, *arguments):
        return self.send(f"/session/{self.session}/execute/sync", {"script": script, "args": list(arguments)})

    def close(self):
        try:
            # The driver alone would leave the browser running.
            self.send(f"/session/{self.session}", method="DELETE")
        finally:
            self.driver.terminate()
            self.driver.wait()


SEARCH = """
const field = document.getElementById('search');
field.value = arguments[0];
field.dispatchEvent(new Event('input'));
return [...document.querySelectorAll('nav li a')].filter(a => a.offsetParent).map(a => a.textContent);
"""


def check(browser, page, members, tasks):
    faults = []
    browser.open(page.resolve().as_uri())
    dead = browser.run("return [...document.querySelectorAll('a[href]')].map(a => a.getAttribute('href'))"
                       ".filter(h => !/^https?:/.test(h) && !(h[0] == '#' && document.getElementById(h.slice(1))))")
    faults += [f"dead link: {link}" for link in dead]
    fetched = browser.run("return performance.getEntriesByType('resource').map(e => e.name)"
                          ".filter(n => !n.startsWith('data:'))")
    faults += [f"fetched: {name}" for name in fetched]
    blank = browser.run("return [...document.images].filter(i => !i.naturalWidth).map(i => i.alt)")
    faults += [f"picture not drawn: {name}" for name in blank]
    if not browser.run("return document.images.length"):
        faults.append("no pictures")
    if not browser.run("return document.querySelectorAll('pre .kw').length"):
        faults.append("examples have no colours")
    for width in (1280, 500):
        browser.size(width, 900)
        wide = browser.run("return document.documentElement.scrollWidth - document.documentElement.clientWidth")
        if wide > 0:
            faults.append(f"{wide} pixels wider than a window of {width}")
    browser.size(1280, 900)
    for member in members:
        if member not in browser.run(SEARCH, member):
            faults.append(f"the search does not find {member}")
    for task, member in tasks:
        if member not in browser.run(SEARCH, task):
            faults.append(f"the search for {task} does not find {member}")
    if browser.run(SEARCH, "no such thing"):
        faults.append("the search finds what is not there")
    return faults


def main():
    page = pathlib.Path(sys.argv[1])
    if not shutil.which("chromedriver"):
        print("browser_test: chromedriver is missing (apt-get install chromium chromium-driver)")
        return 77
    manual = pathlib.Path(__file__).resolve().parents[2] / "docs/manual"
    members, tasks = [], []
    for file in sorted(manual.glob("*.md")):
        for entry in re.split(r"^## ", file.read_text(), flags=re.M)[1:]:
            name = entry.split("\n", 1)[0]
            found = re.search(r"^\*\*Tasks:\*\* (.*)$", entry, flags=re.M)
            if found:
                members.append(name)
                tasks += [(task, name) for task in found[1].split(", ")]
    # The browser's last processes may still write there.
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        browser = Browser(folder)
        try:
            faults = check(browser, page, members, tasks)
        finally:
            browser.close()
    for fault in faults:
        print(f"browser_test: {fault}")
    print(f"browser_test: {len(members)} members and {len(tasks)} tasks looked for, {len(faults)} faults")
    return 1 if faults or not members else 0


if __name__ == "__main__":
    sys.exit(main())

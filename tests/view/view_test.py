#!/usr/bin/env python3
"""view_test.py TNC-VIEW: a real browser shows what tnc-view writes, obeys its keys, and obeys nothing of the source."""

import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import urllib.request

FLAGS = """--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking
--disable-component-update --disable-sync""".split()
OWNED = "<script>document.title='owned'</script><img src=x onerror=\"document.title='owned'\">"
INCLUDED = f'{OWNED}<TnEVAL EXPR="{{g.y}}">'
PAGE = f"""<TnASSIGN NAME="l.x" VALUE="{{g.y +
  1}}"><TnINCLUDE FILE="&<b>.tn">
<TnFUNCTION NAME="twice" PARAMETERS="x"><TnFUNCTIONRETURN VALUE="{{l.x * 2}}"></TnFUNCTION>
<TnEVAL EXPR="{{</pre>{OWNED}}}">"""

# Beside the first line and beside the function, operands explained.
BESIDE = [
    '.string s_0 "page.tn"; sourcefile s_0 "page.tn"; .local l_0 "x"; .global l_1 "y"; lineno 1; pushg l_1 "y"',
    '.function twice stdoutinherit; sourcefile s_0 "page.tn"; .parameter l_0 "x"; lineno 3; pushl l_0 "x"; '
    'pushi 2; mul; ret; .endfunction; pushc s_6 " "; out_comp',
]
ASK = """const all = (selector) => [...document.querySelectorAll(selector)];
const text = (selector) => all(selector).map((found) => found.textContent.replace(/\\s+/g, " ").trim());
return {title: document.title, elements: all("section :is(img, script), pre b").length, sources: text("pre"),
    loaded: performance.getEntriesByType("resource").length, diagnostic: text("#f0-4 .error")[0],
    beside: ["#f0-1", "#f0-3"].map((row) => text(row + " td + td p").join("; ")),
    here: all(".here").map((row) => row.id + " " + text("output")).join(), target: all(":target")[0]?.id,
    ground: getComputedStyle(document.body).backgroundColor}[arguments[0]];"""


def send(to, method="POST", **body):
    request = urllib.request.Request(to, json.dumps(body).encode() if method == "POST" else None, method=method)
    return json.load(urllib.request.urlopen(request, timeout=60))["value"]


def seen(session):
    def ask(what):
        return send(session + "/execute/sync", script=ASK, args=[what])

    def press(keys):
        press = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        send(session + "/actions", actions=[{"type": "key", "id": "keyboard", "actions": press}])
        return ask("here").strip()

    def ground(scheme):
        features = {"features": [{"name": "prefers-color-scheme", "value": scheme}]}
        send(session + "/goog/cdp/execute", cmd="Emulation.setEmulatedMedia", params=features)
        return ask("ground")

    yield "title", ask("title"), "page.tn"
    yield "elements made by sources", ask("elements"), 0
    yield "files loaded", ask("loaded"), 0
    yield "sources", ask("sources"), [line.strip() for line in [*PAGE.split("\n"), INCLUDED]]
    yield "beside", ask("beside"), BESIDE
    yield "diagnostic", ask("diagnostic"), 'CE_175: Found unexpected "<" in expression'
    yield "e, and j around the end", [press(key) for key in "ejjjj"], ["f0-4", "f1-1", "f0-1", "f0-2", "f0-3"]
    yield "search, Enter, k", [press(keys) for keys in ("/G.Y", "\ue007", "\ue00ck")], ["f0-1 1 of 2", "f1-1 2 of 2", "f0-3 2 of 2"]
    send(session + "/execute/sync", script="document.querySelector('.include a').click()", args=[])
    yield "link of the include", ask("target"), "f1-1"
    yield "grounds", [ground("light"), ground("dark")], ["rgb(255, 255, 255)", "rgb(20, 23, 29)"]


def main():
    if not (shutil.which("chromium") and shutil.which("chromedriver")):
        sys.exit(print("skipped: chromium and chromium-driver are not installed") or 77)
    with tempfile.TemporaryDirectory() as folder, subprocess.Popen(
        ["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True
    ) as driver:
        pathlib.Path(folder, "page.tn").write_text(PAGE, encoding="utf-8")
        pathlib.Path(folder, "&<b>.tn").write_text(INCLUDED, encoding="utf-8")
        status = subprocess.run([sys.argv[1], "page.tn"], cwd=folder, capture_output=True).returncode
        started = next(line for line in driver.stdout if "on port" in line and "successfully" in line)
        url = f"http://127.0.0.1:{started.split()[-1].strip('.')}/session"
        options = {"binary": shutil.which("chromium"), "args": [*FLAGS, f"--user-data-dir={folder}/profile"]}
        session = url + "/" + send(url, capabilities={"alwaysMatch": {"goog:chromeOptions": options}})["sessionId"]
        try:
            send(session + "/url", url=pathlib.Path(folder, "output.html").as_uri())
            results = [("exit status", status, 1), *seen(session)]
        finally:
            send(session, "DELETE")
            driver.terminate()
    wrong = [f"{what}: expected {expected}, saw {saw}" for what, saw, expected in results if saw != expected]
    sys.exit("\n".join(wrong) or 0)


if __name__ == "__main__":
    main()

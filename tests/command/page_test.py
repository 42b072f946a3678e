#!/usr/bin/env python3
"""Opens a report's page in a browser, clicks on it and listens to it.

page_test.py PAGE: the one that the tests of songs write. Two parts sing from 1 s to 3.5 s of 4 s, a tone of 220 Hz and
one of 329.6 Hz. Ends with 77 where there is no chromium.
"""
import pathlib
import shutil
import sys
import time

from browser import Browser

chromium = shutil.which("chromium")
if not chromium:
    print("SKIPPED: there is no chromium to open the page with")
    sys.exit(77)

# What goes to the loudspeaker also goes to where it is measured: how loud it is, and how loud a tone in it.
LISTEN = """
  const connect = AudioNode.prototype.connect;
  AudioNode.prototype.connect = function (to, ...rest) {
    if (to instanceof AudioDestinationNode) {
      window.ears ??= [512, 8192].map((fftSize) => new AnalyserNode(to.context, {fftSize, smoothingTimeConstant: 0}));
      for (const ear of window.ears) connect.call(this, ear);
    }
    return connect.call(this, to, ...rest);
  };
  window.loudness = () => {
    const wave = new Float32Array(512);
    window.ears[0].getFloatTimeDomainData(wave);
    return Math.sqrt(wave.reduce((sum, x) => sum + x * x, 0) / wave.length);
  };
  window.tone = (hz) => {
    const ear = window.ears[1], levels = new Float32Array(ear.frequencyBinCount);
    ear.getFloatFrequencyData(levels);
    const bin = Math.round(hz * ear.fftSize / ear.context.sampleRate);
    return Math.max(...levels.slice(bin - 2, bin + 3));
  };
  window.cursorTime = () => Number(document.getElementById("seek").value);
"""
# Cursor and loudness of one moment, frame after frame: read when the page has drawn the frame.
RECORD = """new Promise((done) => {
  const seen = [];
  const look = () => setTimeout(() => {
    if (window.ears) seen.push([window.cursorTime(), window.loudness()]);
    if (window.cursorTime() > 3.9) done(seen);
    else requestAnimationFrame(look);
  });
  look();
})"""


def expect(holds, what):
    if not holds:
        sys.exit(f"page: {what}")


def centre(browser, selector, index=0):
    box = browser.evaluate(f"(() => {{ const b = document.querySelectorAll({selector!r})[{index}].getBoundingClientRect();"
                           " return [b.left + b.width / 2, b.top + b.height / 2]; })()")
    return box


def button(browser, label):
    browser.click(*centre(browser, f'[aria-label="{label}"]'))


with Browser(chromium) as browser:
    browser.call("Page.addScriptToEvaluateOnNewDocument", source=LISTEN)
    browser.show(sys.argv[1], 1000, 800)
    expect(browser.evaluate("document.title") == "Duet </script><b> & \ufffd", "the title is not the song's")
    expect("Alto," in browser.evaluate("document.getElementById('words').innerText"), "the words are not there as text")
    expect(browser.evaluate("document.querySelectorAll('.lane .note').length") == 6, "there are not six notes")
    nodes = browser.call("Accessibility.getFullAXTree")["nodes"]
    for node in nodes:
        if node.get("role", {}).get("value") in ("button", "slider", "image"):
            expect(node.get("name", {}).get("value"), f"a {node['role']['value']} has no name")

    # A click into the middle of the note from 2 s to 3 s.
    x, y = centre(browser, ".lane rect", 1)
    browser.click(x, y)
    browser.wait_for("cursorTime() > 0")
    expect(abs(browser.evaluate("cursorTime()") - 2.5) < 0.03, "a click does not seek to where it is")
    expect(abs(centre(browser, "#cursor")[0] - x) < 2, "the cursor is not where the click was")

    # From the beginning: what is heard while the cursor is there.
    browser.press("Home")
    browser.wait_for("cursorTime() === 0")
    browser.press(" ", " ")
    seen = browser.evaluate(RECORD)
    expect(len(seen) > 20, "the cursor does not move while the song plays")
    for time_, loudness in seen:
        if 0.1 < time_ < 0.88 or 3.62 < time_ < 3.9:
            expect(loudness < 0.001, f"there is sound at {time_}")
        elif 1.12 < time_ < 3.38:
            expect(loudness > 0.05, f"there is no sound at {time_}")

    def heard(label):
        """Levels of both parts' tones after a click on a button, from 1.2 s on."""
        button(browser, label)
        browser.click(*[a + b for a, b in zip(centre(browser, ".lane rect"), (-20, 0))])
        browser.wait_for("cursorTime() < 2")
        browser.click(*centre(browser, "#play"))
        browser.wait_for("cursorTime() > 2.2")
        levels = [browser.evaluate(f"tone({hz})") for hz in (220, 329.6)]
        browser.click(*centre(browser, "#play"))
        browser.wait_for("document.getElementById('play').innerText.trim() === 'Play'")
        return levels

    browser.wait_for("document.getElementById('play').innerText.trim() === 'Play'")
    low, high = heard("Mute Low")
    expect(high > -40 and low < high - 40, f"a muted part is heard: {low} and {high} dB")
    low, high = heard("Solo Low")
    expect(low > -40 and high < low - 40, f"solo does not leave one part: {low} and {high} dB")

    browser.show(sys.argv[1], 360, 740, "dark")
    expect(browser.evaluate("document.documentElement.scrollWidth <= innerWidth"), "a phone has to scroll sideways")
    expect(not browser.complaints, f"the browser complains: {browser.complaints}")

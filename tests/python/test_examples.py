"""Every example does what it says."""
import pathlib
import subprocess
import sys
import wave
import xml.dom.minidom

ROOT = pathlib.Path(__file__).resolve().parents[2]


def run(name, *arguments):
    done = subprocess.run([sys.executable, ROOT / "python/examples" / name, *map(str, arguments)], check=True, capture_output=True,
                          text=True)
    return done.stdout


def seconds_of(path):
    with wave.open(str(path)) as file:
        return file.getnframes() / file.getframerate()


def test_three_lines(tmp_path):
    run("three_lines.py", ROOT / "examples/twinkle.mid", tmp_path / "a.wav")
    assert seconds_of(tmp_path / "a.wav") > 20


def test_reword(tmp_path):
    assert "Float ing on the qui et sea" in run("reword.py", ROOT / "examples/twinkle.mid", tmp_path / "a.wav")
    assert seconds_of(tmp_path / "a.wav") > 3


def test_fit_curve(tmp_path):
    assert "from -2.00 to" in run("fit_curve.py", ROOT / "examples/twinkle.mid", tmp_path / "a.wav")
    assert seconds_of(tmp_path / "a.wav") > 2


def test_plot_pitch(tmp_path):
    said = run("plot_pitch.py", ROOT / "examples/twinkle.mid", tmp_path / "a.svg")
    assert int(said.split(" within ")[1].split()[0]) < 50
    assert len(xml.dom.minidom.parse(str(tmp_path / "a.svg")).getElementsByTagName("circle")) > 100


def test_practice(tmp_path):
    assert run("practice.py", ROOT / "examples/hymn.mid", tmp_path, 2).count("sung by") == 4
    assert {seconds_of(path) for path in tmp_path.iterdir()} == {2.0}

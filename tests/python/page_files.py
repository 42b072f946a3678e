"""Whether the ten-minute pages' code is the files that tests compile and run: a block under a line that names a file is that file."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = ("docs/start-c.md", "docs/start-python.md")
BLOCK = re.compile(r"(?<=^`)([\w./-]+)(`:\n\n<!-- file: [\w.]+ -->\n```\w+\n)(.*?)(?=^```$)", re.M | re.S)

faults, count = [], 0
for page in PAGES:
    for name, _, code in BLOCK.findall((ROOT / page).read_text()):
        count += 1
        if (ROOT / name).read_text() != code:
            faults.append(f"{page}: the code is not {name}: `{pathlib.Path(__file__).name} --write` puts it there")
if "--write" in sys.argv:
    for page in PAGES:
        path = ROOT / page
        path.write_text(BLOCK.sub(lambda found: found[1] + found[2] + (ROOT / found[1]).read_text(), path.read_text()))
elif faults or count < 6:
    sys.exit("\n".join(faults) or "pages: there is too little code in them")

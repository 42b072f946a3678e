#!/usr/bin/env python3
"""Measures every row beside its peers and prints one table: bench/table.py build/release [rounds]

The sides of a row run one after another in one process, and so round by round; what counts is the median of their
processor time, in files in memory where /dev/shm is. A side whose result is not the expected one is an error instead of a row, and
a peer that was not there at configuring is named. Ratios hold on a loaded machine too; times do not.
"""
import json
import os
import pathlib
import statistics
import subprocess
import sys

# benchmark program, what it does, our side, the others
ROWS = [
    ("merge", "parse and merge 1,000,000 events, 16 tracks", "MergeTorv/16",
     {"libsmf": "MergeLibsmf/16", "bytes touched": "ScanBytes/16"}),
    ("engine_file", "save 20,000 messages", "WriteTorv/20000",
     {"libsmf": "WriteLibsmf/20000", "bytes copied": "CopyBytes/20000"}),
    ("engine_file", "save 2,000,000 messages", "WriteTorv/2000000", {"bytes copied": "CopyBytes/2000000"}),
    ("engine_file", "the same, their making in order included", "WriteWithDocument/2000000/1",
     {"bytes copied": "CopyBytes/2000000"}),
    ("engine_file", "the same, made in eight passes", "WriteWithDocument/2000000/8",
     {"bytes copied": "CopyBytes/2000000"}),
    *(("typed_file", title, f"{what}<Typed>",
       {"GKeyFile": f"{what}<Glib>", "SimpleIni": f"{what}<Simple>", "Boost": f"{what}<Boost>",
        **({} if what == "Save" else {"inih": f"{what}<Inih>"})})  # which does not save
      for what, title in (("Load", "load 5 MB of sections, 310,000 keys"), ("Free", "let go of them"),
                          ("LookUp", "look up 100,000"), ("Save", "save them"))),
    ("wave_file", "write 4,000,000 frames, 1,024 a call", "WriteBlocksTorv",
     {"libsndfile": "WriteBlocksSndfile", "bytes copied": "CopyBytes"}),
    ("wave_file", "read them, 1,024 a call", "ReadBlocksTorv", {"libsndfile": "ReadBlocksSndfile"}),
    ("wave_file", "write them one by one", "WriteTorv", {"libsndfile": "WriteSndfile"}),
    ("wave_file", "read them one by one", "ReadTorv", {"libsndfile": "ReadSndfile"}),
    ("stream", "insert at random into 1,000,000 entries", "StreamInsert",
     {"sorted vector": "VectorInsert", "multimap": "MultimapInsert", "Abseil's B-tree": "BtreeInsert"}),
    ("mix", "mix 16 mono files of 60 s in one process", "MixDown",
     {"files copied": "CopyFiles", "memory copied": "CopyMemory"}),
    ("encoding", "encode 10,000 notes", "EncodeTrack/10000", {"bytes copied": "CopyBytes/10000"}),
]
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}


def measure(program, names, rounds):
    """Milliseconds of each benchmark that the program has, in every round."""
    environment = dict(os.environ)
    if pathlib.Path("/dev/shm").is_dir():
        environment.setdefault("TMPDIR", "/dev/shm")
    times = {}
    for _ in range(rounds):
        run = subprocess.run([program, f"--benchmark_filter=^({'|'.join(names)})(/iterations:[0-9]+)?$",
                              "--benchmark_format=json", "--benchmark_min_time=0.05"],
                             check=True, capture_output=True, text=True, env=environment)
        for row in json.loads(run.stdout)["benchmarks"]:
            if "error_message" in row:
                sys.exit(f"{program.name} {row['name']}: {row['error_message']}")
            name = row["name"].split("/iterations")[0]
            times.setdefault(name, []).append(row["cpu_time"] * MILLISECONDS[row["time_unit"]])
    return {name: statistics.median(each) for name, each in times.items()}


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1]) / "bin"
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    print("| what | ours, ms | others, as multiples of ours |\n|---|---|---|")
    missing = set()
    measured = {}
    for bench, title, ours, peers in ROWS:
        if bench not in measured:
            names = {name for other, _, own, theirs in ROWS if other == bench for name in (own, *theirs.values())}
            measured[bench] = measure(folder / f"bench_{bench}", sorted(names), rounds)
        times = measured[bench]
        missing.update(label for label, name in peers.items() if name not in times)
        others = [f"{label} {times[name] / times[ours]:.3g}" for label, name in peers.items() if name in times]
        print(f"| {title} | {times[ours]:.3g} | {', '.join(others)} |", flush=True)
    for label in sorted(missing):
        print(f"NO ROW of {label}: it was not there when the benchmarks were configured")
    for script, arguments in (("mix_bench.py", ["/dev/shm"] if pathlib.Path("/dev/shm").is_dir() else []),
                              ("sing_bench.py", [])):
        print(f"\n{script}:", flush=True)
        subprocess.run([sys.executable, pathlib.Path(__file__).parent / script, folder / "torv", *arguments], check=True)



main()

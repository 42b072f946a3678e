#!/usr/bin/env python3
"""Measures every row beside its peers and prints one table: bench/table.py build/release [rounds]

The sides of a row run one after another, and so round by round, five times unless a number says otherwise. Shown are the
median of our processor time and the median of what a peer took as a multiple of ours in the same round; files are in memory
where /dev/shm is. A side whose result is not the expected one is an error instead of a row, and a peer that was not there is
named. Ratios hold on a loaded machine too; times do not.
"""
import json
import os
import pathlib
import subprocess
import sys

import mix_bench
import sing_bench
from rounds import HEAD, row

# benchmark program, what it does, our side, the others
ROWS = [
    ("merge", "parse and merge 1,000,000 events, 16 tracks", "MergeTorv/16",
     {"TSE3": "MergeTse3/16", "portsmf": "MergePortsmf/16", "JUCE": "MergeJuce/16", "drumstick": "MergeDrumstick/16",
      "libsmf": "MergeLibsmf/16", "bytes touched": "ScanBytes/16"}),
    ("engine_file", "save 20,000 messages", "WriteTorv/20000",
     {"libsmf": "WriteLibsmf/20000", "bytes copied": "CopyBytes/20000"}),
    ("engine_file", "save 2,000,000 messages", "WriteTorv/2000000",
     {"JUCE": "WriteJuce/2000000", "bytes copied": "CopyBytes/2000000"}),
    ("engine_file", "the same, their making in order included", "WriteWithDocument/2000000/1",
     {"JUCE": "WriteWithDocumentJuce/2000000", "drumstick": "WriteDrumstick/2000000",
      "bytes copied": "CopyBytes/2000000"}),
    ("engine_file", "the same, made in eight passes", "WriteWithDocument/2000000/8",
     {"bytes copied": "CopyBytes/2000000"}),
    *(("typed_file", title, f"{what}<Typed>",
       {"GKeyFile": f"{what}<Glib>", "SimpleIni": f"{what}<Simple>", "Boost": f"{what}<Boost>",
        **({} if what == "Save" else {"inih": f"{what}<Inih>"})})  # which does not save
      for what, title in (("Load", "load 5 MB of sections, 310,000 keys"), ("Free", "let go of them"),
                          ("LookUp", "look up 100,000"), ("Save", "save them"))),
    ("wave_file", "write 4,000,000 frames, 1,024 a call", "WriteBlocksTorv/0",
     {"libsndfile": "WriteBlocksSndfile", "libsox": "WriteBlocksSox", "bytes copied": "CopyBytes"}),
    ("wave_file", "the same with a window of 16,384 frames", "WriteBlocksTorv/16384",
     {"libsndfile": "WriteBlocksSndfile", "libsox": "WriteBlocksSox", "bytes copied": "CopyBytes"}),
    ("wave_file", "read them, 1,024 a call", "ReadBlocksTorv",
     {"libsndfile": "ReadBlocksSndfile", "libsox": "ReadBlocksSox"}),
    ("wave_file", "write them one by one", "WriteTorv", {"libsndfile": "WriteSndfile"}),
    ("wave_file", "read them one by one", "ReadTorv", {"libsndfile": "ReadSndfile"}),
    *(("stream", title, what.format("Stream"),
       {label: what.format(store) for label, store in (("sorted vector", "Vector"), ("multimap", "Multimap"),
                                                       ("Abseil's B-tree", "Btree"))
        if "50000" not in what or store != "Vector"})  # it would move megabytes for seconds
      for title, what in (("append 1,000,000 entries", "Append<{}>"), ("walk over them", "Walk<{}>"),
                          ("insert 50,000 at random into 200,000", "Insert<{}>/50000/200000"),
                          ("insert 20,000 at random into 1,000,000", "Insert<{}>/20000/1000000"))),
    ("mix", "mix 16 mono files of 60 s in one process", "MixDown",
     {"files copied": "CopyFiles", "memory copied": "CopyMemory"}),
    *(("engine", f"one {kind} voice, 60 s in steps of 256", f"SingEngine/{program}", {"STK": "SingStk"})
      for kind, program in (("synthetic", 0), ("recorded", 96))),
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
        for each in json.loads(run.stdout)["benchmarks"]:
            if "error_message" in each:
                sys.exit(f"{program.name} {each['name']}: {each['error_message']}")
            name = each["name"].split("/iterations")[0]
            times.setdefault(name, []).append(each["cpu_time"] * MILLISECONDS[each["time_unit"]])
    return times


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1]) / "bin"
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    print(HEAD)
    missing = set(mix_bench.missing(folder / "torv"))
    times = {}
    for bench, title, ours, peers in ROWS:
        if bench not in times:
            names = {name for other, _, own, theirs in ROWS if other == bench for name in (own, *theirs.values())}
            times[bench] = measure(folder / f"bench_{bench}", sorted(names), rounds)
        missing.update(label for label, name in peers.items() if name not in times[bench])
        sides = {"ours": ours, **{label: name for label, name in peers.items() if name in times[bench]}}
        print(row(title, {label: times[bench][name] for label, name in sides.items()}), flush=True)
    for each in (*mix_bench.rows(folder / "torv", rounds), *sing_bench.rows(folder / "torv", rounds)):
        print(row(*each), flush=True)
    for label in sorted(missing):
        print(f"NO ROW of {label}: it was not there when the benchmarks were configured")


main()

#!/usr/bin/env python3
"""Times whole fennick commands side by side: wall time, CPU time and peak memory.

usage: bench/measure.py ROUNDS BINARY... -- COMMAND...
A COMMAND is one argument with {exe} where the binary goes, e.g. "{exe} info large.dst".
Rounds run every binary and command in turn, so that a machine's drift touches all alike;
medians are printed. A command may name a folder to empty first: "rm=out;{exe} convert ...".
"""
import os
import shlex
import shutil
import statistics
import subprocess
import sys
import time


def run(command):
    if command.startswith("rm="):
        folder, command = command[3:].split(";", 1)
        shutil.rmtree(folder, ignore_errors=True)
    start = time.perf_counter()
    process = subprocess.Popen(shlex.split(command), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - start
    if status != 0:
        sys.exit(f"failed: {command}")
    return wall * 1000, (usage.ru_utime + usage.ru_stime) * 1000, usage.ru_maxrss / 1024


def main():
    rounds = int(sys.argv[1])
    split = sys.argv.index("--")
    binaries, commands = sys.argv[2:split], sys.argv[split + 1:]
    results = {(b, c): [] for b in binaries for c in commands}
    for _ in range(rounds):
        for command in commands:
            for binary in binaries:
                results[(binary, command)].append(run(command.replace("{exe}", binary)))
    for command in commands:
        print(command.replace("{exe}", "fennick"))
        for binary in binaries:
            samples = results[(binary, command)]
            wall, cpu, peak = (statistics.median(s[i] for s in samples) for i in range(3))
            print(f"  {binary:40s} wall {wall:7.1f} ms  cpu {cpu:7.1f} ms  peak {peak:6.1f} MiB")


if __name__ == "__main__":
    main()

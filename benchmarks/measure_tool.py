#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
"""Times the tool beside the commands that people use in its place: benchmarks/measure_tool.py [K7SAL]

Prints wall time, processor time and peak memory, medians of 21 runs, startup included. The interfaces are pairs in a
network namespace of its own, so that the machine's network is left alone. Needs what scripts/setup.sh measure installs.
"""
import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

RUNS = 21
TOP = Path(__file__).resolve().parent.parent
TOOL = str(Path(sys.argv[1] if len(sys.argv) > 1 else TOP / "build/release/tools/k7sal/k7sal").resolve())


def once(command):
    """Wall and processor milliseconds of one run."""
    start = time.perf_counter()
    with open(os.devnull, "r+b") as nothing:
        process = subprocess.Popen(command, stdin=nothing, stdout=nothing, stderr=nothing)
    _, _, usage = os.wait4(process.pid, 0)
    process.returncode = 0
    return (time.perf_counter() - start) * 1e3, (usage.ru_utime + usage.ru_stime) * 1e3


def peak(command):
    """Peak KiB of one run; by a program of its own, because a child of this one begins with this one's memory."""
    run = subprocess.run(["time", "-f", "%M", *command], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    return int(run.stderr.split()[-1])


def medians(command):
    once(command)
    return [*(statistics.median(values) for values in zip(*(once(command) for _ in range(RUNS)))), peak(command)]


def compare(title, own, others):
    rows = [(" ".join(["k7sal", *own[1:]]), medians(own))] + [(" ".join(other), medians(other)) for other in others]
    total = [sum(row[1][0] for row in rows[1:]), sum(row[1][1] for row in rows[1:]), max(row[1][2] for row in rows[1:])]
    rows.append(("the others together", total))
    print(f"\n{title}")
    for name, (wall, cpu, memory) in rows:
        print(f"  {name:42} {wall:8.1f} ms wall  {cpu:8.1f} ms cpu  {memory / 1024:6.1f} MiB")
    print(f"  ratio of wall time {rows[0][1][0] / total[0]:.2f}, of processor time {rows[0][1][1] / total[1]:.2f}", flush=True)


def interfaces(count):
    """In a namespace of its own: the loopback and as many pairs of interfaces as COUNT has room for."""
    subprocess.run(["mount", "-t", "sysfs", "none", "/sys"], check=True)
    with tempfile.NamedTemporaryFile("w") as batch:
        for index in range(count // 2):
            left, right = f"k7a{index}", f"k7b{index}"
            batch.write(f"link add {left} type veth peer name {right}\n")
            batch.write(f"addr add 10.{index // 250}.{index % 250}.1/24 dev {left}\n")
            batch.write(f"link set {left} up\nlink set {right} up\n")
        batch.flush()
        subprocess.run(["ip", "-batch", batch.name], check=True)
    compare(f"{count} interfaces", [TOOL, "net", "--json"], [["ip", "-j", "-s", "addr"], ["ip", "-j", "link"]])


def main():
    if len(sys.argv) > 2:
        return interfaces(int(sys.argv[2]))
    compare("Startup", [TOOL, "--version"], [["free", "--version"]])
    compare("Startup, beside a whole free", [TOOL, "--version"], [["free"]])
    compare("Report", [TOOL, "report", "--json"], [["lsblk", "-O", "-J"], ["ip", "-j", "addr"], ["lspci", "-nnk"]])
    for count in (4, 256, 500):
        subprocess.run(["unshare", "-rnm", sys.executable, __file__, TOOL, str(count)], check=True)


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Applies a chain to every picture of a folder with Dask: dask_folder.py CHAIN IN OUT [SCHEDULER]

Without the address of a scheduler it starts two workers on this machine. IN and OUT are folders that
all workers see under these names. Say it again after a failure: only what is missing is done.
"""
import json
import os
import subprocess
import sys

import dask
from distributed import Client, LocalCluster, as_completed

BATCH = 20  # pictures a task: a start of the program costs about 10 ms, a task of Dask about 3 ms


def apply_chain(names, chain, out, program="fxbox"):
    """The report of fxbox on these pictures, a dictionary each.

    A task that ran before, on a worker that is gone, may run again: fxbox leaves alone what is
    there, and what it writes appears whole or not at all.
    """
    done = subprocess.run(
        [program, "apply", "-f", chain, "--files-from", "-", "--null", "--jobs", "1",
         "--skip-existing", "--json-lines", "-o", out],
        input="\0".join(names).encode(), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if done.returncode not in (0, 1):  # 1: some pictures failed, and their lines say why
        raise RuntimeError(done.stderr.decode(errors="replace"))
    return [json.loads(line) for line in done.stdout.splitlines()]


def run(client, names, chain, out, program="fxbox"):
    """Yields the report of each picture as it comes."""
    batches = [names[at:at + BATCH] for at in range(0, len(names), BATCH)]
    # `pure=False`: equal batches are tasks of their own. Workers that die take none with them.
    tasks = client.map(apply_chain, batches, chain=chain, out=out, program=program,
                       pure=False, retries=3, batch_size=200)
    for task in as_completed(tasks):
        yield from task.result()


def main():
    chain, folder, out = (os.path.abspath(name) for name in sys.argv[1:4])
    names = sorted(entry.path for entry in os.scandir(folder) if entry.is_file())
    os.makedirs(out, exist_ok=True)
    dask.config.set({"distributed.scheduler.allowed-failures": 10})
    scheduler = sys.argv[4] if len(sys.argv) > 4 else LocalCluster(
        n_workers=2, threads_per_worker=1, host="127.0.0.1", dashboard_address=None)
    failed = 0
    with Client(scheduler) as client:
        for report in run(client, names, chain, out, os.environ.get("FXBOX", "fxbox")):
            print(json.dumps(report), flush=True)
            failed += report["status"] == "failed"
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()

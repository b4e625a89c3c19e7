#!/usr/bin/python3
"""The recipe for Dask as docs/at-scale.md has it: DaskTest.py DOCS PROGRAM

2,000 pictures, two workers, of which one is killed in the middle: every result is there once, whole,
and equal to that of a single run. Runs in `make soak` alone (FXBOX_SOAK), where Dask is installed.
"""
import filecmp
import json
import os
import random
import signal
import subprocess
import sys
import tempfile

import jsonschema

PICTURES = 2000
SCHEMA = os.path.dirname(__file__) + "/../../resources/schemas/apply-line-1.json"
SKIPPED = 77


def write_pictures(folder):
    noise = random.Random(1)
    os.mkdir(folder)
    for i in range(PICTURES):
        with open(f"{folder}/picture {i}.ppm", "wb") as file:
            file.write(b"P6\n40 30\n255\n" + noise.randbytes(40 * 30 * 3))


def kill_a_worker(client):
    pid = next(iter(client.run(os.getpid).values()))
    os.kill(pid, signal.SIGKILL)


def run_cluster(recipe, folder, out, program):
    cluster = recipe.LocalCluster(n_workers=2, threads_per_worker=1, host="127.0.0.1",
                                  dashboard_address=None, silence_logs=50, local_directory=folder)
    names = sorted(entry.path for entry in os.scandir(f"{folder}/in"))
    outputs = []
    with open(SCHEMA, encoding="utf-8") as file:
        form = jsonschema.Draft202012Validator(json.load(file))
    with cluster, recipe.Client(cluster) as client:
        for report in recipe.run(client, names, f"{folder}/chain", out, program):
            outputs.append(report["output"])
            assert report["status"] in ("done", "skipped"), report
            form.validate(report)
            if len(outputs) == PICTURES // 4:
                kill_a_worker(client)
    return outputs


def main():
    docs, program = sys.argv[1:3]
    try:
        import distributed  # noqa: F401
    except ImportError:
        sys.exit(SKIPPED)
    if "FXBOX_SOAK" not in os.environ:
        sys.exit(SKIPPED)
    sys.path.insert(0, f"{docs}/recipes")
    import dask_folder as recipe
    recipe.dask.config.set({"distributed.scheduler.allowed-failures": 10})
    with tempfile.TemporaryDirectory() as folder:
        write_pictures(f"{folder}/in")
        with open(f"{folder}/chain", "w") as file:
            file.write("ZNFilter.Sepia.1(Sepia=080)ZNFilter.Invert.1(Inversity=020)")
        out, want = f"{folder}/out", f"{folder}/want"
        outputs = run_cluster(recipe, folder, out, program)
        subprocess.run(f'"{program}" apply --quiet -f chain -o want in/*.ppm', shell=True, check=True,
                       cwd=folder)
        assert len(outputs) == len(set(outputs)) == PICTURES
        names = sorted(os.listdir(out))
        assert names == sorted(os.listdir(want)) and len(names) == PICTURES
        equal, differing, errors = filecmp.cmpfiles(out, want, names, shallow=False)
        assert len(equal) == PICTURES, (differing, errors)


if __name__ == "__main__":
    main()

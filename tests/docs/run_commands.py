"""Runs the shell commands that a document shows, in order, in an empty folder: what a reader would type must work.

usage: run_commands.py ORVIK DOCUMENT.md

Blocks fenced as `sh` are run; those fenced as `console` are for reading.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile


def main() -> int:
    orvik, document = (pathlib.Path(name).resolve() for name in sys.argv[1:3])
    blocks = re.findall(r"^```sh\n(.*?)^```", document.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
    if not blocks:
        print(f"{document} shows no commands")
        return 1
    environment = dict(os.environ, PATH=f"{orvik.parent}{os.pathsep}{os.environ['PATH']}")
    with tempfile.TemporaryDirectory() as folder:
        for block in blocks:
            done = subprocess.run(["sh", "-eux", "-c", block], cwd=folder, env=environment, text=True,
                                  capture_output=True, check=False)
            print(done.stderr[-2000:])
            if done.returncode != 0:
                print(f"{document}: this ended with {done.returncode}:\n{block}")
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

"""What both kinds of mutants are tried in: a copy of the tree, which git's files are brought into."""

import shutil
import subprocess


def run(command, **options):
    """What a command prints, errors included, and its exit code. The options are those of subprocess.run."""
    return subprocess.run(command, **options, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                          text=True, errors="replace")


def copy_tree(root, place):
    """Leaves alone what is the same, so that it is not built again."""
    place.mkdir(parents=True, exist_ok=True)
    for name in run(["git", "-C", root, "ls-files"]).stdout.splitlines():
        copy = place / name
        copy.parent.mkdir(parents=True, exist_ok=True)
        if not copy.exists() or copy.read_bytes() != (root / name).read_bytes():
            shutil.copyfile(root / name, copy)

"""Shared fixtures of the script suites: they run inside oxlin's embedded interpreter."""

import os
import subprocess

import pytest

# The program that runs these tests; separate runs of it check what only a process shows
# (exit status, standard streams).
OXLIN = os.environ.get("OXLIN", "oxlin")

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"
JPEG_SIGNATURE = b"\xff\xd8\xff"


@pytest.fixture
def run_oxlin(tmp_path):
    """Runs `oxlin --no-gui` on a script text (written to tmp_path/job.py) with the given
    arguments after `--`; `options` go before the script (a scene file, --python, ...), `env`
    adds to the environment.
    Returns the finished process with text stdout and stderr."""

    def run(script, *args, options=(), timeout=300, env=None):
        command = [OXLIN, "--no-gui", "--prefs-dir", str(tmp_path / "prefs"), *options]
        if script is not None:
            path = tmp_path / "job.py"
            path.write_text(script)
            command += ["--script", str(path)]
        if args:
            command += ["--", *args]
        return subprocess.run(command, capture_output=True, text=True, timeout=timeout,
                              stdin=subprocess.DEVNULL,
                              env=None if env is None else {**os.environ, **env})

    return run


@pytest.fixture
def read_image():
    """Reads an image file back: (width, height, channels, pixels as a flat float list)."""
    import OpenImageIO as oiio

    def read(path):
        image = oiio.ImageInput.open(str(path))
        assert image, oiio.geterror()
        spec = image.spec()
        pixels = image.read_image("float")
        image.close()
        return spec.width, spec.height, spec.nchannels, pixels

    return read

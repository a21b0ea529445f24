"""oxlin runs scripts: the command line, exit statuses, streams and the script namespace."""

import __main__
import sys

import pytest


def test_namespace_holds_the_module_commands():
    import oxMovieExport

    assert __main__.createSnapshot is oxMovieExport.createSnapshot
    assert sys.argv[0].endswith("run_pytest.py")


@pytest.mark.parametrize(
    "script, status",
    [
        ("x = 1", 0),
        ("import sys\nsys.exit(7)", 7),
        ("import sys\nsys.exit()", 0),
        ("raise ValueError('bad value')", 1),
        ("def broken(:\n", 1),
    ],
)
def test_exit_status_follows_the_script(run_oxlin, script, status):
    result = run_oxlin(script)
    assert result.returncode == status, result.stderr
    if status == 1:
        assert "Traceback" in result.stderr or "SyntaxError" in result.stderr
    else:
        assert "Traceback" not in result.stderr


def test_arguments_print_and_errors_reach_the_process(run_oxlin):
    result = run_oxlin(
        "import sys\nprint('args', sys.argv[1:], sys.argv[0].endswith('job.py'))\n"
        "print('to stderr', file=sys.stderr)\n"
        "raise RuntimeError('stopped here')\n",
        "first", "second arg",
    )
    assert result.returncode == 1
    assert "args ['first', 'second arg'] True\n" in result.stdout
    assert "to stderr\n" in result.stderr
    assert 'File "' in result.stderr and "RuntimeError: stopped here" in result.stderr


def test_python_code_from_the_command_line(run_oxlin):
    result = run_oxlin(None, "a", options=("--python", "import sys; print(sys.argv)"))
    assert result.returncode == 0, result.stderr
    assert "['-c', 'a']\n" in result.stdout


def test_missing_script_is_one_error_line_and_status_2(run_oxlin, tmp_path):
    missing = tmp_path / "nowhere" / "job.py"
    result = run_oxlin(None, options=("--script", str(missing)))
    assert result.returncode == 2
    assert result.stderr.splitlines() == [
        "oxlin: can't read the script '%s': No such file or directory" % missing
    ]


def test_scene_and_job_script_write_snapshot_movie_and_stream(run_oxlin, tmp_path, read_image):
    """The main scripted job: a project on the command line, snapshots, a movie and a stream."""
    example = tmp_path / "example"
    assert run_oxlin(None, options=("--write-example", str(example))).returncode == 0
    out = tmp_path / "out"
    script = f"""
import os, sys
out = sys.argv[1]
assert createSnapshot(os.path.join(out, 'front.png'), 64, 36, 1)
createMovie('Turntable', os.path.join(out, 'turn.avi'), 32, 32, 25, 0, 3, 0, False,
            '0,0,0', True, False, 1, False, 1)
data = imageStream(lambda: createSnapshot(os.path.join(out, 'streamed.jpg'), 16, 16))
open(os.path.join(out, 'stream.bin'), 'wb').write(data)
print('stream', len(data))
"""
    out.mkdir()
    result = run_oxlin(script, str(out), options=(str(example / "showroom.oxp"),))
    assert result.returncode == 0, result.stderr
    assert read_image(out / "front.png")[:2] == (64, 36)
    assert (out / "turn.avi").stat().st_size > 0
    assert (out / "stream.bin").read_bytes().startswith(b"\x89PNG\r\n\x1a\n")
    assert not (out / "streamed.jpg").exists()

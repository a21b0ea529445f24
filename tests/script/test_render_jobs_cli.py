"""Render jobs from the command line: oxlin --list-outputs and --render run the job of a
project's stored render settings without a script."""

import os
from xml.sax.saxutils import escape

import pytest


@pytest.fixture
def project(run_oxlin, tmp_path):
    """The example project with stored render settings: the turntable's eight viewpoints at a
    tiny size, one sample, written to tmp_path/out/job.png. Returns its path."""
    example = tmp_path / "example"
    assert run_oxlin(None, options=("--write-example", str(example))).returncode == 0
    settings = f"""<?xml version="1.0" encoding="UTF-8"?>
<oxMessage xmlns:ox="urn:oxlin:message" ox:format="1" ox:id="0">
  <string n="MovieExport Filename">{tmp_path / "out" / "job.png"}</string>
  <string n="MovieExport View">Turntable</string>
  <float n="ImageExport floatwidth">24</float>
  <float n="ImageExport floatheight">16</float>
  <int n="RaytracingSettings_imageSamples">1</int>
  <int n="MovieExport ssfactor">0</int>
</oxMessage>
"""
    text = (example / "showroom.oxp").read_text()
    record = '  <string n="pluginRecord">%s</string>\n</oxMessage>' % escape(settings)
    path = example / "job.oxp"
    path.write_text(text.replace("</oxMessage>", record))
    return path


def listed_files(result):
    """The file lines of an oxlin --list-outputs run (the plug-in prints lines of its own)."""
    return [line for line in result.stdout.splitlines() if line.startswith("/")]


def test_list_then_render_writes_exactly_the_listed_files(run_oxlin, project, tmp_path,
                                                           read_image):
    listing = run_oxlin(None, options=(str(project), "--list-outputs"))
    assert listing.returncode == 0, listing.stderr
    files = listed_files(listing)
    assert files == [str(tmp_path / "out" / "Turntable" / ("job_Turntable %d.png" % i))
                     for i in range(1, 9)]

    render = run_oxlin(None, options=(str(project), "--render"))
    assert render.returncode == 0, render.stderr
    assert "Rendered 8 files." in render.stdout
    written = sorted(str(path) for path in (tmp_path / "out").rglob("*") if path.is_file())
    assert written == sorted(files)
    assert read_image(files[0])[:2] == (24, 16)


def test_existing_files_stop_a_render_unless_overwritten(run_oxlin, project):
    assert run_oxlin(None, options=(str(project), "--render")).returncode == 0
    files = listed_files(run_oxlin(None, options=(str(project), "--list-outputs")))
    stamps = [os.stat(path).st_mtime_ns for path in files]

    again = run_oxlin(None, options=(str(project), "--render"))
    assert again.returncode == 1
    assert "8 of the 8 files exist already (--overwrite replaces them)" in again.stderr
    assert [os.stat(path).st_mtime_ns for path in files] == stamps

    forced = run_oxlin(None, options=(str(project), "--render", "--overwrite"))
    assert forced.returncode == 0, forced.stderr
    assert all(os.stat(path).st_mtime_ns != stamp for path, stamp in zip(files, stamps))


def test_unknown_preset_and_misused_options_are_refused(run_oxlin, project):
    unknown = run_oxlin(None, options=(str(project), "--list-outputs", "--preset", "Nowhere"))
    assert unknown.returncode == 1
    assert "the preset file has no preset named 'Nowhere'" in unknown.stderr

    for options in (("--list-outputs", "--render"), ("--overwrite",)):
        refused = run_oxlin(None, options=options)
        assert refused.returncode == 2
        assert "oxlin:" in refused.stderr

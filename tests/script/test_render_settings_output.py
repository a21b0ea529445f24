"""The output commands of the oxRenderSettings script module: what a script sets is what the
written files show, and the file list a script gets is the list a render writes."""

import os
import textwrap

import oxRenderSettings as rs
import pytest

WIDTH, HEIGHT = 32, 24
XMP_NAMESPACE = b"http://ns.oxlin.org/rendersettings/1.0/"

# The output family in the order scripts have always found it in the module.
OUTPUT_COMMANDS = [
    "getRenderView", "setRenderCurrentView", "setRenderView", "getRenderOutputFilenames",
    "setRenderVariantSets", "getRenderVariantSets", "clearRenderVariantSetGroups",
    "removeRenderVariantSetGroup", "getRenderVariantSetGroups",
    "setUseRenderViewFromVariantSets", "getUseRenderViewFromVariantSets",
    "setUseRenderVariantSets", "getUseRenderVariantSets", "setRenderPrintResolution",
    "getRenderPrintWidth", "getRenderPrintHeight", "getRenderPixelPerInch",
    "setRenderPixelResolution", "getRenderPixelWidth", "getRenderPixelHeight",
    "setRenderFilename", "getRenderFilename", "setUseRenderRegion", "getUseRenderRegion",
    "setRenderRegionStartX", "getRenderRegionStartX", "setRenderRegionStartY",
    "getRenderRegionStartY", "setRenderRegionEndX", "getRenderRegionEndX",
    "setRenderRegionEndY", "getRenderRegionEndY", "setRenderSupersampling",
    "getRenderSupersampling", "setRenderTonemapHDR", "getRenderTonemapHDR",
    "setRenderPremultiply", "getRenderPremultiply", "setRenderAlpha", "getRenderAlpha",
    "setRenderICCProfile", "getRenderICCProfile", "setRenderBackgroundColor",
    "getRenderBackgroundColor", "setUseRenderPasses", "getUseRenderPasses", "setRenderPasses",
    "getRenderPasses", "setRenderMetaDataFlags", "getRenderMetaDataFlags",
    "setRenderAnimation", "getRenderAnimation", "setRenderAnimationFormat",
    "getRenderAnimationFormat", "setRenderAnimationType", "getRenderAnimationType",
    "setRenderAnimationClip", "getRenderAnimationClip", "getRenderAnimationClips",
    "setRenderUseClipRange", "getRenderUseClipRange", "setRenderStartFrame",
    "setRenderStopFrame", "getRenderStartFrame", "getRenderStopFrame", "setRenderFrameStep",
    "getRenderFrameStep", "setRenderFps", "getRenderFps", "startRenderToFile",
]

# A small still job in a fresh folder; the variable parts are set by each test. The same text
# starts the separate processes, whose log is read from their standard error.
JOB_SETUP = """
import oxRenderSettings as rs
rs.setRenderPixelResolution({width}, {height}, 72.0)
rs.setRenderCurrentView()
rs.clearRenderVariantSetGroups()
rs.setUseRenderVariantSets(False)
rs.setRenderAnimation(False)
rs.setUseRenderRegion(False)
rs.setRenderAlpha(False)
rs.setRenderMetaDataFlags(0)
rs.setRenderPasses(["beauty"])
rs.setUseRenderPasses(False)
rs.setRenderFilename({filename!r})
"""


def setup_job(filename):
    exec(JOB_SETUP.format(width=WIDTH, height=HEIGHT, filename=str(filename)), {})


def written(folder):
    """Every file below folder, as full paths."""
    return sorted(os.path.join(root, name) for root, _, names in os.walk(folder)
                  for name in names)


@pytest.fixture
def job(tmp_path):
    """A still job of the current view writing tmp_path/out/car.png."""
    out = tmp_path / "out"
    setup_job(out / "car.png")
    return out


class TestModule:
    def test_output_commands_come_first_in_their_order(self):
        names = [name for name in vars(rs) if not name.startswith("_")]
        assert names[:len(OUTPUT_COMMANDS)] == OUTPUT_COMMANDS

    def test_deliberately_odd_keywords(self):
        rs.setRenderRegionStartY(startX=7)
        assert rs.getRenderRegionStartY() == 7
        rs.setRenderAnimation(frame=True)
        assert rs.getRenderAnimation()
        rs.setRenderAnimation(False)
        # One name with commas for several arguments: they can only go by position.
        with pytest.raises(TypeError):
            rs.setRenderVariantSets(groupName="Rims", variantSetNames=["Rims Sport"])
        with pytest.raises(TypeError):
            rs.setRenderVariantSets(**{"groupName, variantSetNames": ["Rims Sport"]})
        rs.setRenderVariantSets("Rims", **{"groupName, variantSetNames": ["Rims Sport"]})
        assert rs.getRenderVariantSets("Rims") == ["Rims Sport"]
        with pytest.raises(TypeError):
            rs.setRenderPrintResolution(printWidth=1.0, printHeight=1.0, pixelsPerInch=72.0)
        with pytest.raises(TypeError):
            rs.setRenderBackgroundColor(r=0.0, g=0.0, b=0.0)

    def test_docstrings(self):
        assert rs.getRenderOutputFilenames.__doc__.strip() == (
            "Returns all filenames that will be created when rendering is started, i.e. when "
            "using multiple viewpoints, animation frames or variant sets.\n\n"
            "@return: All names of files to be created.\n\n"
            "@rtype: vector<string>")
        assert rs.setRenderCurrentView.__doc__.strip() == (
            "Sets the view to use the current position.")
        assert "@param r:" in rs.setRenderBackgroundColor.__doc__
        assert "@param enable:" in rs.setRenderAnimation.__doc__
        for name in OUTPUT_COMMANDS:
            blocks = getattr(rs, name).__doc__.strip().split("\n\n")
            params = [b.split(":")[0][len("@param "):] for b in blocks if b.startswith("@param")]
            types = [b.split(":")[0][len("@type "):] for b in blocks if b.startswith("@type")]
            assert params == types, name


class TestSettings:
    def test_switches_are_clamped(self):
        for setter, getter in [(rs.setRenderAnimationFormat, rs.getRenderAnimationFormat),
                               (rs.setRenderAnimationType, rs.getRenderAnimationType)]:
            setter(5)
            assert getter() == 1
            setter(-1)
            assert getter() == 0
        rs.setRenderSupersampling(7)
        assert rs.getRenderSupersampling() != 0
        rs.setRenderSupersampling(0)
        assert rs.getRenderSupersampling() == 0

    def test_print_and_pixel_resolution(self):
        rs.setRenderPrintResolution(21.0, 29.7, 300.0)
        assert rs.getRenderPixelWidth() == pytest.approx(2480.3, abs=0.1)
        assert rs.getRenderPixelHeight() == pytest.approx(3507.9, abs=0.1)
        assert rs.getRenderPrintWidth() == pytest.approx(21.0, rel=1e-6)
        assert rs.getRenderPrintHeight() == pytest.approx(29.7, rel=1e-6)
        assert rs.getRenderPixelPerInch() == 300.0
        rs.setRenderPixelResolution(720.0, 360.0, 72.0)
        assert rs.getRenderPrintWidth() == pytest.approx(25.4, rel=1e-6)
        assert rs.getRenderPrintHeight() == pytest.approx(12.7, rel=1e-6)

    def test_region_follows_the_image_edge_but_is_stored_as_given(self):
        rs.setRenderPixelResolution(64.0, 48.0, 72.0)
        rs.setRenderRegionStartX(0)
        rs.setRenderRegionStartY(0)
        rs.setRenderRegionEndX(64)
        rs.setRenderRegionEndY(20)
        rs.setRenderPixelResolution(32.0, 24.0, 72.0)
        rs.setRenderPixelResolution(40.0, 30.0, 72.0)
        # The end on the edge moved with it; the other one never grows.
        assert (rs.getRenderRegionEndX(), rs.getRenderRegionEndY()) == (40, 12)
        rs.setRenderRegionStartX(1000)
        assert rs.getRenderRegionStartX() == 1000

    def test_background_color_and_metadata_round_trip(self):
        rs.setRenderBackgroundColor(0.25, 0.5, 1.0)
        assert rs.getRenderBackgroundColor() == (0.25, 0.5, 1.0)
        rs.setRenderMetaDataFlags(1 << 7 | 1)
        assert rs.getRenderMetaDataFlags() == 129

    def test_passes_by_name(self):
        rs.setRenderPasses(["depth", "no_such_pass", "beauty", "cryptoMaterialMatte", "albedo"])
        # The script order, not the order given.
        assert rs.getRenderPasses() == ["beauty", "albedo", "depth", "cryptoMaterialMatte"]
        rs.setRenderPasses(["no_such_pass"])
        assert rs.getRenderPasses() == []
        rs.setRenderPasses(["view", "specular_reflection"])
        rs.setRenderPasses([])
        assert rs.getRenderPasses() == []

    def test_views_and_variant_set_groups(self):
        rs.setRenderView("Side")
        assert rs.getRenderView() == "Side"
        rs.setRenderView("No Such View")
        assert rs.getRenderView() == "Current"

        rs.clearRenderVariantSetGroups()
        rs.setRenderVariantSets("Rims", ["Rims Sport"])
        rs.setRenderVariantSets("Paint", ["Paint Red", "Paint Blue"])
        rs.setRenderVariantSets("Rims", ["Rims Classic"])
        assert rs.getRenderVariantSetGroups() == ["Rims", "Paint"]
        assert rs.getRenderVariantSets("Rims") == ["Rims Classic"]
        assert rs.getRenderVariantSets("Unknown") == []
        rs.removeRenderVariantSetGroup("Rims")
        assert rs.getRenderVariantSetGroups() == ["Paint"]
        rs.clearRenderVariantSetGroups()
        assert rs.getRenderVariantSetGroups() == []

    def test_clips_of_the_scene(self):
        assert rs.getRenderAnimationClips() == ["Product Spin"]


class TestWrittenFiles:
    def test_size_format_and_alpha(self, job, read_image):
        rs.startRenderToFile(True)
        assert (job / "car.png").read_bytes().startswith(b"\x89PNG")
        assert read_image(job / "car.png")[:3] == (WIDTH, HEIGHT, 3)

        rs.setRenderFilename(str(job / "car.jpg"))
        rs.setRenderPixelResolution(20.0, 10.0, 72.0)
        rs.startRenderToFile(True)
        assert (job / "car.jpg").read_bytes().startswith(b"\xff\xd8\xff")
        assert read_image(job / "car.jpg")[:2] == (20, 10)

        rs.setRenderFilename(str(job / "alpha.png"))
        rs.setRenderAlpha(True)
        rs.startRenderToFile(True)
        assert read_image(job / "alpha.png")[2] == 4

    def test_metadata_flags_choose_what_is_embedded(self, job):
        for name, flags in [("none", 0), ("image", 8), ("camera", 1)]:
            rs.setRenderFilename(str(job / (name + ".png")))
            rs.setRenderMetaDataFlags(flags)
            rs.startRenderToFile(True)
        assert XMP_NAMESPACE not in (job / "none.png").read_bytes()
        image = (job / "image.png").read_bytes()
        assert b"<ox:pixelWidth>32</ox:pixelWidth>" in image
        camera = (job / "camera.png").read_bytes()
        assert XMP_NAMESPACE in camera and b"pixelWidth" not in camera

    def test_passes_write_one_file_each(self, job):
        rs.setRenderPasses(["depth", "beauty", "normal"])
        rs.setUseRenderPasses(True)
        rs.startRenderToFile(True)
        assert sorted(os.listdir(job)) == ["car.beauty.png", "car.depth.png", "car.normal.png"]

    def test_file_list_of_viewpoints_and_variant_sets_is_what_a_render_writes(self, job):
        rs.setRenderView("Turntable")
        rs.setRenderVariantSets("Rims", ["Rims Sport", "Rims Classic"])
        rs.setUseRenderVariantSets(True)
        names = rs.getRenderOutputFilenames()
        # Viewpoint outside, variant set inside, in the track's own folder.
        assert names[:3] == [str(job / "Turntable" / name) for name in [
            "car_Turntable 1_Rims Sport.png", "car_Turntable 1_Rims Classic.png",
            "car_Turntable 2_Rims Sport.png"]]
        assert len(names) == 16
        rs.startRenderToFile(True)
        assert written(job) == sorted(names)

    def test_file_list_of_an_animation_with_passes_is_what_a_render_writes(self, job):
        rs.setRenderAnimation(True)
        rs.setRenderAnimationType(1)
        rs.setRenderAnimationFormat(0)
        rs.setRenderStartFrame(3)
        rs.setRenderStopFrame(5)
        rs.setRenderFrameStep(2)
        rs.setRenderPasses(["beauty", "depth"])
        rs.setUseRenderPasses(True)
        names = rs.getRenderOutputFilenames()
        assert names == [str(job / name) for name in [
            "car.beauty.0003.png", "car.depth.0003.png", "car.beauty.0005.png",
            "car.depth.0005.png"]]
        rs.startRenderToFile(True)
        assert written(job) == sorted(names)

    def test_bad_filename_gives_no_files(self, job):
        rs.setRenderFilename("")
        assert rs.getRenderOutputFilenames() == []


class TestExistingAndProtectedFiles:
    """The render runs in a process of its own, whose log is its standard error."""

    def run_job(self, run_oxlin, filename, body):
        script = JOB_SETUP.format(width=WIDTH, height=HEIGHT, filename=str(filename))
        result = run_oxlin(script + textwrap.dedent(body))
        assert result.returncode == 0, result.stderr
        return result.stderr

    def test_existing_files_stop_a_render_unless_overridden(self, run_oxlin, tmp_path):
        out = tmp_path / "out"
        out.mkdir()
        (out / "car.depth.png").write_bytes(b"old")
        log = self.run_job(run_oxlin, out / "car.png", """
            rs.setRenderPasses(["beauty", "depth"])
            rs.setUseRenderPasses(True)
            rs.startRenderToFile(False)
        """)
        assert (f"[error] Files already exist. Choose another filename!\n"
                f"{out / 'car.depth.png'}\n") in log
        assert sorted(os.listdir(out)) == ["car.depth.png"]
        assert (out / "car.depth.png").read_bytes() == b"old"

        log = self.run_job(run_oxlin, out / "car.png", """
            rs.setRenderPasses(["beauty", "depth"])
            rs.setUseRenderPasses(True)
            rs.startRenderToFile(True)
        """)
        assert "already exist" not in log
        assert sorted(os.listdir(out)) == ["car.beauty.png", "car.depth.png"]
        assert (out / "car.depth.png").read_bytes() != b"old"

    def test_unwritable_files_are_named_and_the_render_goes_on(self, run_oxlin, tmp_path):
        out = tmp_path / "out"
        # A folder where an image should go can't be written, by root neither.
        (out / "car.beauty.png").mkdir(parents=True)
        log = self.run_job(run_oxlin, out / "car.png", """
            rs.setRenderPasses(["beauty", "depth"])
            rs.setUseRenderPasses(True)
            rs.startRenderToFile(True)
        """)
        assert f"[warning] Found write protected files.\n{out / 'car.beauty.png'}\n" in log
        assert (out / "car.depth.png").is_file()

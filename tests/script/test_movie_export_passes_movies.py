"""The oxMovieExport script module: render pass setters, movies and export formats."""

import json
import subprocess

import oxMovieExport as ox
import pytest

# The keywords of the shortest setActiveSnapshotMovieRenderPasses form, all off.
ACTIVE_OFF = dict.fromkeys([
    "beauty_pass", "diffuse_ibl_pass", "diffuse_light_pass", "glossy_ibl_pass",
    "glossy_light_pass", "specular_reflection_pass", "specular_light_pass",
    "diffuse_indirect_pass", "glossy_indirect_pass", "occlusion_pass", "normal_pass",
    "depth_pass",
], False)
AUXILIARY_OFF = [False] * 7


@pytest.fixture(autouse=True)
def no_pass_override():
    ox.resetActiveSnapshotMovieRenderPasses()
    yield
    ox.resetActiveSnapshotMovieRenderPasses()


def snapshot_files(folder, name="shot"):
    """Takes a snapshot NAME.png in folder; the names of the files it wrote."""
    assert ox.createSnapshot(str(folder / (name + ".png")), 32, 24)
    return sorted(path.name for path in folder.iterdir() if path.name.startswith(name + "."))


class TestRenderPasses:
    def test_active_passes_by_position_and_keyword(self, tmp_path):
        ox.setActiveSnapshotMovieRenderPasses(True, False, False, False, False, False, False,
                                              False, False, False, False, True)
        assert snapshot_files(tmp_path, "twelve") == ["twelve.beauty.png", "twelve.depth.png"]
        ox.setActiveSnapshotMovieRenderPasses(**dict(ACTIVE_OFF, normal_pass=True),
                                              incandescence_pass=False, material_id_pass=True)
        assert snapshot_files(tmp_path, "fourteen") == [
            "fourteen.materialID.png", "fourteen.normal.png"]

    def test_only_the_ignored_argument_ends_the_override(self, tmp_path):
        ox.setActiveSnapshotMovieRenderPasses(True, False, False, False, False, False, False,
                                              False, False, False, False, True)
        ox.setActiveSnapshotMovieRenderPasses(**dict(ACTIVE_OFF, specular_light_pass=True))
        assert snapshot_files(tmp_path) == ["shot.png"]

    def test_group_setters_add_to_the_active_passes(self, tmp_path):
        ox.setActiveSnapshotMovieRenderPasses(**dict(ACTIVE_OFF, beauty_pass=True))
        ox.setAuxiliaryChannelsRenderPasses(*AUXILIARY_OFF[:4], True, False, False,
                                            cryptomatte_object_pass=True)
        assert snapshot_files(tmp_path, "added") == [
            "added.beauty.png", "added.cryptoObject00.png", "added.cryptoObject01.png",
            "added.cryptoObject02.png", "added.mask.png"]
        # The other way round the full setter clears what the group setter chose.
        ox.resetActiveSnapshotMovieRenderPasses()
        ox.setAuxiliaryChannelsRenderPasses(*AUXILIARY_OFF, False, True)
        ox.setActiveSnapshotMovieRenderPasses(**dict(ACTIVE_OFF, beauty_pass=True))
        assert snapshot_files(tmp_path, "replaced") == ["replaced.beauty.png"]

    def test_group_setter_alone_and_reset(self, tmp_path):
        ox.setAuxiliaryChannelsRenderPasses(occlusion_pass=False, normal_pass=True,
                                            depth_pass=False, material_id_pass=False,
                                            mask_pass=False, position_pass=True,
                                            view_vector_pass=True)
        assert snapshot_files(tmp_path, "aux") == [
            "aux.normal.png", "aux.position.png", "aux.view.png"]
        ox.resetActiveSnapshotMovieRenderPasses()
        assert snapshot_files(tmp_path, "reset") == ["reset.png"]

    def test_setters_accept_their_documented_forms(self):
        ox.setCombinedChannelsRenderPasses(*[False] * 10)
        ox.setCombinedChannelsRenderPasses(*[False] * 12)
        ox.setMaterialChannelsRenderPasses(*[False] * 5)
        ox.setMaterialChannelsRenderPasses(*[False] * 6)
        ox.setMaterialChannelsRenderPasses(*[False] * 5, background_pass=False,
                                           incandescence_pass=False)
        ox.setIlluminationChannelsRenderPasses(*[False] * 10)
        ox.setAuxiliaryChannelsRenderPasses(*[False] * 9)
        ox.setImageProcessingRenderPasses(False, False, fog_pass=False, lens_flare_pass=False)
        ox.setActiveSnapshotMovieRenderPasses(*[False] * 13)
        ox.setActiveSnapshotMovieRenderPasses(*[False] * 15)
        with pytest.raises(TypeError):
            ox.setActiveSnapshotMovieRenderPasses(*[False] * 11)
        with pytest.raises(TypeError):
            ox.setCombinedChannelsRenderPasses(*[False] * 11)


def frames(folder, name):
    return sorted(path.name for path in folder.iterdir() if path.name.startswith(name + "."))


class TestMovies:
    def test_unnamed_forms_write_numbered_images(self, tmp_path):
        target = str(tmp_path / "seq.png")
        ox.createMovie(target, 32, 24, 25, 0, 1, 0, False, 1.0, 1.0, 1.0, True)
        assert frames(tmp_path, "seq") == ["seq.0000.png", "seq.0001.png"]
        ox.createMovie(str(tmp_path / "step.png"), 32, 24, 25, 0, 4, 0, False, 1.0, 1.0, 1.0,
                       True, False, 2)
        assert frames(tmp_path, "step") == ["step.0000.png", "step.0002.png", "step.0004.png"]
        ox.createMovie(filename=str(tmp_path / "kw.png"), width=32, height=24, fps=25,
                       startFrame=3, stopFrame=3, ssf=0, alpha=False, alphaRed=1.0,
                       alphaGreen=1.0, alphaBlue=1.0, overwrite=True, alpha_premultiply=False,
                       step=0, tonemap_hdr=False)
        assert frames(tmp_path, "kw") == ["kw.0003.png"]

    def test_named_form_writes_an_avi_for_export_type_1(self, tmp_path):
        target = tmp_path / "clip.avi"
        ox.createMovie("Product Spin", str(target), 32.9, 24.1, 25, 0, 2, 0, False, "1,1,1",
                       True, False, 1, False, False, 1)
        probe = subprocess.run(
            ["ffprobe", "-v", "error", "-count_frames", "-show_entries",
             "stream=codec_name,width,height,nb_read_frames", "-of", "json", str(target)],
            capture_output=True, text=True, check=True)
        stream = json.loads(probe.stdout)["streams"][0]
        assert (stream["codec_name"], stream["width"], stream["height"]) == ("mjpeg", 32, 24)
        assert int(stream["nb_read_frames"]) == 3

    def test_named_form_with_other_export_types_writes_images(self, tmp_path):
        ox.createMovie(movie="Product Spin", filename=str(tmp_path / "named.png"), width=32,
                       height=24, fps=25, startFrame=5, stopFrame=6, ssf=0, alpha=False,
                       alphaRGB="0,0,0", overwrite=True, alpha_premultiply=False, step=1,
                       use_clip_range=False, export_type=2)
        assert frames(tmp_path, "named") == ["named.0005.png", "named.0006.png"]

    def test_render_animation_and_step_animation(self, tmp_path):
        common = (25, 3, 4, 0, False, 1.0, 1.0, 1.0, True, False)
        ox.renderAnimation("Product Spin", str(tmp_path / "anim.png"), 32, 24, *common)
        ox.renderAnimation("Product Spin", str(tmp_path / "hdr.png"), 32, 24, *common, True)
        ox.renderStepAnimation("Product Spin", str(tmp_path / "every.png"), 32, 24, 25, 0, 6,
                               0, False, 1.0, 1.0, 1.0, True, False, step=3)
        assert frames(tmp_path, "anim") == ["anim.0003.png", "anim.0004.png"]
        assert frames(tmp_path, "hdr") == ["hdr.0003.png", "hdr.0004.png"]
        assert frames(tmp_path, "every") == ["every.0000.png", "every.0003.png", "every.0006.png"]


@pytest.mark.parametrize("stem", ["TiffHDR", "ExrHalf", "MultiLayer"])
def test_export_format_switches_round_trip(stem):
    setter, getter = getattr(ox, "setExport" + stem), getattr(ox, "getExport" + stem)
    before = getter()
    try:
        for value in (True, False, True):
            setter(value)
            assert getter() is value
    finally:
        setter(before)


def test_multi_layer_switch_puts_the_passes_into_one_file(tmp_path):
    ox.setActiveSnapshotMovieRenderPasses(**dict(ACTIVE_OFF, beauty_pass=True, depth_pass=True))
    try:
        ox.setExportMultiLayer(True)
        assert ox.createSnapshot(str(tmp_path / "layers.exr"), 32, 24)
    finally:
        ox.setExportMultiLayer(False)
    assert [path.name for path in tmp_path.iterdir()] == ["layers.exr"]

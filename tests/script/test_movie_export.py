"""The oxMovieExport script module: its commands, snapshots and image streams."""

import base64
import re

import OpenImageIO as oiio
import oxMovieExport as ox
import pytest

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"
JPEG_SIGNATURE = b"\xff\xd8\xff"

COMMANDS = [
    "createSnapshot", "createSnapshotStream", "imageStream", "imageStreamBase64",
    "createSnapshotFastInit", "createSnapshotFast", "createSnapshotFastTerminate",
    "setSnapshotQuality", "setSnapshotNoShowImage", "setSnapshotICCProfile",
    "setSnapshotEmbedMetaData", "createMovie", "renderAnimation", "renderStepAnimation",
    "setActiveSnapshotMovieRenderPasses", "setCombinedChannelsRenderPasses",
    "setMaterialChannelsRenderPasses", "setIlluminationChannelsRenderPasses",
    "setAuxiliaryChannelsRenderPasses", "setImageProcessingRenderPasses",
    "resetActiveSnapshotMovieRenderPasses", "getLastRenderTime",
    "setExportTiffHDR", "getExportTiffHDR", "setExportExrHalf", "getExportExrHalf",
    "setExportMultiLayer", "getExportMultiLayer",
]


def image_info(path):
    """(width, height, channels) of an image file."""
    image = oiio.ImageInput.open(str(path))
    assert image, oiio.geterror()
    spec = image.spec()
    image.close()
    return spec.width, spec.height, spec.nchannels


def test_commands_are_registered_in_order_and_star_imported():
    import __main__

    names = [name for name in vars(ox) if not name.startswith("_")]
    assert names == COMMANDS
    for name in COMMANDS:
        assert getattr(__main__, name) is getattr(ox, name)


@pytest.mark.parametrize("name", COMMANDS)
def test_docstrings_pair_every_param_with_its_type(name):
    doc = getattr(ox, name).__doc__
    if name == "createSnapshotStream":
        assert doc is None
        return
    assert doc and doc.strip()
    blocks = doc.strip().split("\n\n")
    params = [b.split(":")[0][len("@param "):] for b in blocks if b.startswith("@param ")]
    types = [b.split(":")[0][len("@type "):] for b in blocks if b.startswith("@type ")]
    assert params == types
    for block in blocks:
        if block.startswith("@type "):
            assert re.fullmatch(r"@type \w+: (string|integer|float|bool|int)", block), block
    if "@rtype:" in doc:
        assert "@return:" in doc


def test_docstrings_with_fixed_wording():
    assert ox.getExportExrHalf.__doc__.strip() == (
        "Return if EXR is exported in 16 bit float format.\n\n"
        "@return: True for 16 fit export, False otherwise.")
    assert ox.createSnapshotFastInit.__doc__.strip() == (
        "Initializes the fast snapshot method setting the image resolution to width times "
        "height. Optionally, a supersampling factor can be specified.")
    assert ox.imageStream.__doc__.strip().endswith(
        "binaryimage = imageStream(lambda: createSnapshot('D:/oxlin-snapshots/image.png', "
        "100,100,50))")
    assert ("This parameter is deprecated, the specular light pass no longer exists, therefore "
            "the parameter will be ignored." in ox.setActiveSnapshotMovieRenderPasses.__doc__)
    assert ox.setAuxiliaryChannelsRenderPasses.__doc__.strip().startswith(
        "Sets the active combined channels renderpasses")


@pytest.mark.parametrize("call", [
    lambda: ox.createSnapshot("only-a-name.png"),
    lambda: ox.createSnapshot("a.png", "32", 24),
    lambda: ox.createSnapshot(32.5, 24),
    lambda: ox.createSnapshotFast(),
    lambda: ox.createMovie("a.png", 32, 24),
    lambda: ox.imageStream(),
    lambda: ox.createSnapshotStream(None, 32, 24),
    lambda: ox.setExportTiffHDR(),
    lambda: ox.setSnapshotEmbedMetaData(True, True),
    # Keywords that scripts can't use: blanks in the names, or names given to later arguments.
    lambda: ox.setIlluminationChannelsRenderPasses(diffuse_ibl_pass=True),
    lambda: ox.setImageProcessingRenderPasses(fog_pass=True, lens_flare_pass=True),
    lambda: ox.createSnapshotStream(mime_type="png", width=32, height=24),
    # Every keyword of the long form with float sizes: one more than the float form names.
    lambda: ox.createSnapshot(filename="a.png", width=32.0, height=24.0, ssf=0, alpha=False,
                              alphaRed=0.0, alphaGreen=0.0, alphaBlue=0.0, dpi=72.0,
                              overwrite=True, showImage=False, alpha_premultiply=False,
                              tonemap_hdr=False, cluster_host=""),
])
def test_wrong_arguments_raise_type_error(call):
    with pytest.raises(TypeError, match="did not match C\\+\\+ signature"):
        call()


class TestSnapshots:
    @pytest.mark.parametrize("args", [
        (32, 24),
        (32, 24, 3),
        (32, 24, 0, False),
        (32, 24, 0, False, 72.0),
        (32, 24, 0, False, 0.0, 0.0, 0.0, 72.0, True, False),
        (32, 24, 0, False, 0.0, 0.0, 0.0, 72.0, True, False, False),
        (32, 24, 0, False, 0.0, 0.0, 0.0, 72.0, True, False, False, False),
        (32, 24, 0, False, 0.0, 0.0, 0.0, 72.0, True, False, False, False, ""),
        (32.9, 24.2, 0, False, 0.0, 0.0, 0.0, 72.0, True, False, False, False, ""),
    ], ids=lambda args: "%d-args" % (len(args) + 1) + ("-float" if isinstance(args[0], float)
                                                       else ""))
    def test_forms_with_a_file_name_write_the_size_asked_for(self, tmp_path, args):
        path = tmp_path / "shot.png"
        assert ox.createSnapshot(str(path), *args) is True
        assert image_info(path)[:2] == (32, 24)
        assert isinstance(ox.getLastRenderTime(), float) and ox.getLastRenderTime() > 0

    def test_arguments_by_keyword(self, tmp_path):
        short = tmp_path / "short.png"
        assert ox.createSnapshot(filename=str(short), width=32, height=24, ssf=0, alpha=True,
                                 dpi=150.0)
        assert image_info(short) == (32, 24, 4)
        # The float-size form names its arguments one place further on: "filename" is the width.
        shifted = tmp_path / "shifted.png"
        assert ox.createSnapshot(str(shifted), filename=32.0, width=24.0, height=0, ssf=False,
                                 alpha=0.0, alphaRed=0.0, alphaGreen=0.0, alphaBlue=72.0,
                                 dpi=True, overwrite=False, showImage=False,
                                 alpha_premultiply=False, tonemap_hdr="")
        assert image_info(shifted) == (32, 24, 3)

    def test_short_form_keeps_the_alpha_of_the_form_before(self, tmp_path):
        for alpha, channels in ((True, 4), (False, 3)):
            ox.createSnapshot(str(tmp_path / "set.png"), 32, 24, 0, alpha)
            kept = tmp_path / ("kept-%s.png" % alpha)
            assert ox.createSnapshot(str(kept), 32, 24)
            assert image_info(kept)[2] == channels

    def test_none_as_file_name_writes_nothing(self, tmp_path):
        assert ox.createSnapshot(None, 32, 24) is False
        assert ox.createSnapshot(None, 32, 24, 0, False, 1.0, 1.0, 1.0, 72.0, True, False) is False
        assert ox.createSnapshotFast(None) is False
        assert list(tmp_path.iterdir()) == []

    def test_fast_snapshots_write_a_series(self, tmp_path):
        for init in ((32, 24), (32, 24, 1)):
            ox.createSnapshotFastInit(*init)
            names = [tmp_path / ("fast-%d-%d.png" % (len(init), i)) for i in range(2)]
            try:
                assert all(ox.createSnapshotFast(str(name)) for name in names)
            finally:
                ox.createSnapshotFastTerminate()
            assert [image_info(name)[:2] for name in names] == [(32, 24)] * 2

    def test_icc_profile_and_metadata_reach_the_file(self, tmp_path):
        def attributes(path):
            image = oiio.ImageInput.open(str(path))
            names = {attribute.name for attribute in image.spec().extra_attribs}
            image.close()
            return names

        try:
            ox.setSnapshotICCProfile(1)
            ox.setSnapshotEmbedMetaData(False, True, False, False, False)
            ox.createSnapshot(str(tmp_path / "tagged.png"), 32, 24)
        finally:
            ox.setSnapshotICCProfile(0)
            ox.setSnapshotEmbedMetaData(False, False, False, False, False)
        ox.createSnapshot(str(tmp_path / "plain.png"), 32, 24)
        tagged, plain = attributes(tmp_path / "tagged.png"), attributes(tmp_path / "plain.png")
        assert "ICCProfile" in tagged and "ICCProfile" not in plain
        assert any(name.startswith("ox:") for name in tagged - plain)


class TestStreams:
    def test_image_stream_returns_every_image_as_png_and_writes_no_file(self, tmp_path):
        def three_snapshots():
            ox.createSnapshot(str(tmp_path / "a.png"), 32, 24)
            ox.createSnapshot(str(tmp_path / "b.jpg"), 32, 24)
            ox.createSnapshot(str(tmp_path / "c.png"), 32, 24)

        data = ox.imageStream(three_snapshots)
        assert isinstance(data, bytes)
        assert data.startswith(PNG_SIGNATURE) and data.count(PNG_SIGNATURE) == 3
        assert list(tmp_path.iterdir()) == []
        encoded = ox.imageStreamBase64(three_snapshots)
        assert isinstance(encoded, str) and base64.b64decode(encoded) == data

    def test_function_without_images(self):
        assert ox.imageStream(lambda: None) == b""
        assert ox.imageStreamBase64(function=lambda: None) == ""

    def test_exception_of_the_function_reaches_the_caller(self, tmp_path):
        def failing():
            ox.createSnapshot(str(tmp_path / "a.png"), 32, 24)
            raise ValueError("no more images")

        try:
            with pytest.raises(ValueError, match="no more images"):
                ox.imageStream(failing)
            with pytest.raises(ZeroDivisionError):
                ox.imageStreamBase64(lambda: 1 / 0)
        finally:
            # A script error leaves the capture in place; a complete capture ends it.
            ox.imageStream(lambda: None)
        assert ox.createSnapshot(str(tmp_path / "after.png"), 32, 24)
        assert (tmp_path / "after.png").exists()

    @pytest.mark.parametrize("mime_type, signature", [
        ("png", PNG_SIGNATURE),
        ("", PNG_SIGNATURE),
        ("image/png", PNG_SIGNATURE),
        ("jpg", JPEG_SIGNATURE),
        ("image/Jpg", JPEG_SIGNATURE),
    ])
    def test_snapshot_stream_encodes_the_format_asked_for(self, mime_type, signature):
        data = ox.createSnapshotStream(mime_type, 32, 24)
        assert isinstance(data, bytes) and data.startswith(signature)

    def test_snapshot_stream_mime_type_through_a_mapping(self):
        data = ox.createSnapshotStream(**{"mime-type": "png", "width": 32, "height": 24})
        assert data.startswith(PNG_SIGNATURE)

"""The raytracing commands of oxRenderSettings: what they set in the renderer and what a user
sees of it."""

import re

import oxMovieExport as ox
import oxRenderSettings as rs
import pytest

# The family as scripts know it, in the order of registration; it ends the module.
COMMANDS = """
setRaytracingCores getRaytracingCores setRaytracingImageSamples getRaytracingImageSamples
setRaytracingSamplesThreshold getRaytracingSamplesThreshold setRaytracingAAInitialSamples
setRaytracingAAAdaptiveSamples setRenderTimeInSeconds getRenderTimeInSeconds
setUseRenderTimeLimit getUseRenderTimeLimit setUseInfiniteRenderInViewport
getUseInfiniteRenderInViewport setRaytracingAAThreshold setRaytracingAAThresholdQuality
getRaytracingAAThresholdQuality setRaytracingAAImageFilter getRaytracingAAImageFilterType
getRaytracingAAImageFilterWidth getRaytracingAAImageFilterHeight setRaytracingClampingEnable
getRaytracingClampingEnable setRaytracingClampValue getRaytracingClampValue
setRaytracingMotionBlurEnable setRaytracingDOFEnable setRaytracingInteractiveQualityMode
getRaytracingInteractiveQualityMode setRaytracingInteractiveQuality
getRaytracingInteractiveQuality setRaytracingStillFrameQualityMode
getRaytracingStillFrameQualityMode setRaytracingStillFrameQuality getRaytracingStillFrameQuality
setRaytracingInteractiveIBLQuality getRaytracingInteractiveIBLQuality
setRaytracingStillFrameIBLQuality getRaytracingStillFrameIBLQuality
setRaytracingInteractiveTraceDepth getRaytracingInteractiveTraceDepth
setRaytracingStillFrameTraceDepth getRaytracingStillFrameTraceDepth setRaytracingPhotonMode
getRaytracingPhotonMode setRaytracingInteractivePhotonCount getRaytracingInteractivePhotonCount
setRaytracingStillFramePhotonCount getRaytracingStillFramePhotonCount
setRaytracingPhotonLookupCount getRaytracingPhotonLookupCount setRaytracingFinalGathering
setRaytracingInteractiveFinalGatherQuality getRaytracingInteractiveFinalGatherQuality
setRaytracingStillFrameFinalGatherQuality getRaytracingStillFrameFinalGatherQuality
setRaytracingFinalGatherRadius getRaytracingFinalGatherRadius
setRaytracingUseFinalGatherForGlossy getRaytracingUseFinalGatherForGlossy
setRaytracingPhotonMapRefreshMode getRaytracingPhotonMapRefreshMode
setRaytracingPhotonMapFreezeMode getRaytracingPhotonMapFreezeMode
setRaytracingCausticPhotonRadius setRaytracingIndirectPhotonRadius setRaytracingPhotonRadius
getRaytracingPhotonRadius setRaytracingNURBSEpsilon setRaytracingNURBSNewtonEpsilon
setRaytracingNURBSUsePreclassification setRaytracingNURBSMinDepthSurface
setRaytracingNURBSMaxDepthSurface setRaytracingNURBSThresholdSurface
setRaytracingNURBSMinDepthCurve setRaytracingNURBSMaxDepthCurve setRaytracingNURBSThresholdCurve
setRaytracingSampleOffset getRaytracingSampleOffset setRaytracingInteractiveTextureSharpness
getRaytracingInteractiveTextureSharpness setRaytracingStillFrameTextureSharpness
getRaytracingStillFrameTextureSharpness setRaytracingLightEvaluationThreshold
getRaytracingLightEvaluationThreshold setRaytracingRenderer setSpectralRaytracing
getSpectralRaytracing setRaytracingMode getRaytracingMode setActiveGPUMask setUseRaySplitting
setDenoiserInput setUseTwoSampleImportanceSampling setMaxClusterTileSize setIlluminant
getIlluminant setRaytracingUseHighQualityTextureFiltering
getRaytracingUseHighQualityTextureFiltering setRaytracingStillFrameSupersampling
getRaytracingStillFrameSupersampling setNURBSRaytracing getNURBSRaytracing setBrdfMode
getBrdfMode disableRaytracingOverrides setRaytracingRenderRegion setRenderPNGQuality
getRenderPNGQuality generateRayFile addPreset applyPreset setDenoiseFilter getDenoiseFilter
setDenoiserType getDenoiserType setDenoiserModel getDenoiserModel setDenoiseAlpha
getDenoiseAlpha setEnableDenoiseFilter getEnableDenoiseFilter setDenoiseFilterThreshold
getDenoiseFilterThreshold
""".split()

LEGACY_DENOISER = "[info] Legacy CPU denoiser no longer supported. AI denoiser will be used\n"
CPU_ONLY = ("[info] Render view: GPU raytracing was chosen, but this host has no GPU raytracer; "
            "rendering stays on the CPU.\n")


@pytest.fixture
def keep(request):
    """keep(stem, ...): puts the value of getStem back after the test (through setStem)."""
    saved = []

    def remember(*stems):
        for stem in stems:
            saved.append((getattr(rs, "set" + stem), getattr(rs, "get" + stem)()))

    yield remember
    for setter, value in reversed(saved):
        setter(value)


@pytest.fixture
def full_frame():
    yield
    rs.setRaytracingRenderRegion(0.0, 0.0, 1.0, 1.0)


def snapshot(tmp_path, name, ssf=0):
    """A 32x24 snapshot through the renderer, as rows of RGB pixels."""
    import OpenImageIO as oiio

    path = tmp_path / (name + ".png")
    assert ox.createSnapshot(str(path), 32, 24, ssf)
    image = oiio.ImageInput.open(str(path))
    pixels = image.read_image("float")
    image.close()
    return pixels


def test_commands_close_the_module_in_order_and_are_star_imported():
    import __main__

    names = [name for name in vars(rs) if not name.startswith("_")]
    assert names[-len(COMMANDS):] == COMMANDS
    for name in COMMANDS:
        assert getattr(__main__, name) is getattr(rs, name)


@pytest.mark.parametrize("name", COMMANDS)
def test_docstrings_pair_every_param_with_its_type(name):
    doc = getattr(rs, name).__doc__
    assert doc and doc.strip()
    blocks = doc.strip().split("\n\n")
    params = [b.split(":")[0][len("@param "):] for b in blocks if b.startswith("@param ")]
    types = [b.split(":")[0][len("@type "):] for b in blocks if b.startswith("@type ")]
    assert params == types
    for block in blocks:
        if block.startswith("@type ") or block.startswith("@rtype"):
            assert re.fullmatch(r"@r?type( \w+)?: (string|integer|float|bool)", block), block
    assert ("@rtype:" in doc) == ("@return:" in doc)


def test_docstrings_with_fixed_wording():
    assert rs.disableRaytracingOverrides.__doc__.strip() == (
        "Disables the raytracing override settings in all materials.")
    assert rs.applyPreset.__doc__.strip().startswith("Apply preset in Render Queue .\n\n")
    assert rs.setNURBSRaytracing.__doc__.strip().startswith(
        "If off, the tessellated meshes will be used during raytracing. If on, the NURBS "
        "surfaces will be traced directly.")
    assert rs.getUseRenderTimeLimit.__doc__.strip().startswith(
        "If true, the render time limit is used. Otherwise the number of image samples is used.")
    assert "This can slow down rendering performance quite a bit.." in (
        rs.setRaytracingUseHighQualityTextureFiltering.__doc__)


# Setters with a getter: what a script sets, the renderer's store answers.
ROUND_TRIPS = [
    ("RaytracingCores", 3), ("RaytracingImageSamples", 7), ("RaytracingSamplesThreshold", 3),
    ("RenderTimeInSeconds", 4000), ("UseRenderTimeLimit", True),
    ("UseInfiniteRenderInViewport", False), ("RaytracingAAThresholdQuality", 2),
    ("RaytracingClampingEnable", False), ("RaytracingClampValue", 4.5),
    ("RaytracingInteractiveQualityMode", -1), ("RaytracingInteractiveQuality", 3),
    ("RaytracingStillFrameQualityMode", 0), ("RaytracingStillFrameQuality", 4),
    ("RaytracingInteractiveIBLQuality", 2), ("RaytracingStillFrameIBLQuality", 3),
    ("RaytracingInteractiveTraceDepth", 5), ("RaytracingStillFrameTraceDepth", 9),
    ("RaytracingPhotonMode", 2), ("RaytracingInteractivePhotonCount", 1234),
    ("RaytracingStillFramePhotonCount", 5678), ("RaytracingPhotonLookupCount", 32),
    ("RaytracingInteractiveFinalGatherQuality", 3), ("RaytracingStillFrameFinalGatherQuality", 4),
    ("RaytracingFinalGatherRadius", 3.5), ("RaytracingUseFinalGatherForGlossy", True),
    ("RaytracingPhotonMapRefreshMode", 0), ("RaytracingPhotonMapFreezeMode", 1),
    ("RaytracingPhotonRadius", 2.5), ("RaytracingSampleOffset", 11),
    ("RaytracingInteractiveTextureSharpness", 0.75), ("RaytracingStillFrameTextureSharpness", 0.125),
    ("RaytracingLightEvaluationThreshold", 0.25), ("Illuminant", 2),
    ("RaytracingUseHighQualityTextureFiltering", False), ("RaytracingStillFrameSupersampling", 2),
    ("NURBSRaytracing", True), ("BrdfMode", 1), ("RenderPNGQuality", 6), ("DenoiseFilter", 3),
    ("DenoiserType", 1), ("DenoiserModel", 2), ("DenoiseAlpha", False),
    ("SpectralRaytracing", True),
]


@pytest.mark.parametrize("stem, value", ROUND_TRIPS, ids=[stem for stem, _ in ROUND_TRIPS])
def test_every_setter_reaches_what_its_getter_reads(keep, stem, value):
    keep(stem)
    getattr(rs, "set" + stem)(value)
    assert getattr(rs, "get" + stem)() == value


# Setters without a getter, called by their keywords: all of them take their documented
# arguments.
KEYWORD_CALLS = [
    ("setRaytracingAAThreshold", {"threshold": 0.5}),
    ("setRaytracingMotionBlurEnable", {"state": False}),
    ("setRaytracingDOFEnable", {"state": False}),
    ("setRaytracingNURBSEpsilon", {"epsilon": 0.01}),
    ("setRaytracingNURBSNewtonEpsilon", {"epsilon": 0.005}),
    ("setRaytracingNURBSUsePreclassification", {"enable": True}),
    ("setRaytracingNURBSMinDepthSurface", {"depth": 2}),
    ("setRaytracingNURBSMaxDepthSurface", {"depth": 8}),
    ("setRaytracingNURBSThresholdSurface", {"threshold": 0.975}),
    ("setRaytracingNURBSMinDepthCurve", {"depth": 0}),
    ("setRaytracingNURBSMaxDepthCurve", {"depth": 6}),
    ("setRaytracingNURBSThresholdCurve", {"threshold": 0.975}),
    ("setRaytracingRenderer", {"mode": 0}),
    ("setActiveGPUMask", {"mask": 3}),
    ("setUseRaySplitting", {"on": True}),
    ("setDenoiserInput", {"type": 0}),
    ("setUseTwoSampleImportanceSampling", {"on": False}),
    ("setMaxClusterTileSize", {"tilesize": 32}),
    ("setDenoiseFilterThreshold", {"value": 0.5}),
]


@pytest.mark.parametrize("name, arguments", KEYWORD_CALLS, ids=[n for n, _ in KEYWORD_CALLS])
def test_setters_without_getters_take_their_keywords(name, arguments):
    assert getattr(rs, name)(**arguments) is None


def test_keywords_of_commands_with_getters(keep):
    keep("RaytracingCores", "DenoiseAlpha", "RaytracingPhotonRadius")
    rs.setRaytracingCores(numCores=5)
    rs.setDenoiseAlpha(model=False)
    rs.setRaytracingCausticPhotonRadius(radius=6.0)
    assert (rs.getRaytracingCores(), rs.getDenoiseAlpha(), rs.getRaytracingPhotonRadius()) == (
        5, False, 6.0)
    # The region's one name holds all four: the corners go by position only, and trying
    # keywords is an ordinary error.
    with pytest.raises(TypeError, match="did not match C\\+\\+ signature"):
        rs.setRaytracingRenderRegion(xBegin=0.0, yBegin=0.0, xEnd=1.0, yEnd=1.0)


def test_pixel_filter_goes_to_the_renderer_as_a_whole():
    old = (rs.getRaytracingAAImageFilterType(), rs.getRaytracingAAImageFilterWidth(),
           rs.getRaytracingAAImageFilterHeight())
    rs.setRaytracingAAImageFilter(id=2, width=1.5, height=2.5)
    assert (rs.getRaytracingAAImageFilterType(), rs.getRaytracingAAImageFilterWidth(),
            rs.getRaytracingAAImageFilterHeight()) == (2, 1.5, 2.5)
    rs.setRaytracingAAImageFilter(*old)


def test_photon_radius_setters_are_one(keep):
    keep("RaytracingPhotonRadius")
    for radius, setter in enumerate([rs.setRaytracingCausticPhotonRadius,
                                     rs.setRaytracingIndirectPhotonRadius,
                                     rs.setRaytracingPhotonRadius], start=5):
        setter(float(radius))
        assert rs.getRaytracingPhotonRadius() == radius


def test_final_gathering_sets_both_qualities(keep):
    keep("RaytracingInteractiveFinalGatherQuality", "RaytracingStillFrameFinalGatherQuality")
    rs.setRaytracingFinalGathering(3)
    assert rs.getRaytracingInteractiveFinalGatherQuality() == 3
    assert rs.getRaytracingStillFrameFinalGatherQuality() == 3


class TestReplacedValues:
    @pytest.mark.parametrize("cores", [0, -4])
    def test_cores_below_one_mean_no_limit(self, keep, cores):
        keep("RaytracingCores")
        rs.setRaytracingCores(cores)
        assert rs.getRaytracingCores() == 9999999

    def test_legacy_denoiser_becomes_the_still_frame_denoiser_with_a_note(self, keep, capfd):
        keep("DenoiseFilter")
        capfd.readouterr()
        rs.setDenoiseFilter(1)
        assert rs.getDenoiseFilter() == 2
        assert capfd.readouterr().err == LEGACY_DENOISER

    def test_old_denoise_switch_sets_the_filter_but_reads_false(self, keep):
        keep("DenoiseFilter")
        rs.setEnableDenoiseFilter(True)
        assert (rs.getDenoiseFilter(), rs.getEnableDenoiseFilter()) == (2, False)
        rs.setEnableDenoiseFilter(False)
        assert rs.getDenoiseFilter() == 0

    def test_any_mode_but_zero_is_gpu_and_rendering_stays_on_the_cpu(self, capfd):
        capfd.readouterr()
        try:
            rs.setRaytracingMode(7)
            rs.setRaytracingMode(1)
            assert rs.getRaytracingMode() == 1
        finally:
            rs.setRaytracingMode(0)
        assert rs.getRaytracingMode() == 0
        # Said once, when the GPU was chosen.
        assert capfd.readouterr().err == CPU_ONLY


class TestRetiredCommands:
    @pytest.mark.parametrize("setter, name", [
        (rs.setRaytracingAAInitialSamples, "setInitialAASamples"),
        (rs.setRaytracingAAAdaptiveSamples, "setAdaptiveAASamples"),
    ])
    def test_sample_setters_print_their_warning(self, capfd, setter, name):
        capfd.readouterr()
        setter(16)
        assert capfd.readouterr() == (
            "Warning: %s is deprecated and is no longer used.\n" % name, "")

    def test_silent_ones_change_nothing(self, capfd):
        before = (rs.getRaytracingClampValue(), rs.getRaytracingImageSamples(),
                  rs.getDenoiseFilter())
        capfd.readouterr()
        rs.setRaytracingMotionBlurEnable(False)
        rs.setRaytracingDOFEnable(False)
        rs.setRaytracingAAThreshold(0.25)
        rs.setDenoiseFilterThreshold(0.75)
        assert capfd.readouterr() == ("", "")
        assert (rs.getRaytracingClampValue(), rs.getRaytracingImageSamples(),
                rs.getDenoiseFilter()) == before
        assert rs.getDenoiseFilterThreshold() == 0.0


class TestWhatTheImageShows:
    def test_region_renders_only_its_part_and_the_full_frame_turns_it_off(self, tmp_path,
                                                                           full_frame):
        whole = snapshot(tmp_path, "whole")
        rs.setRaytracingRenderRegion(0.5, 0.0, 1.0, 1.0)
        right = snapshot(tmp_path, "right")
        assert not right[:, :16].any()
        assert (right[:, 16:] == whole[:, 16:]).all()
        # The corners may come in any order.
        rs.setRaytracingRenderRegion(1.0, 1.0, 0.5, 0.0)
        assert (snapshot(tmp_path, "swapped") == right).all()
        # The region's y runs up from the bottom of the image.
        rs.setRaytracingRenderRegion(0.0, 0.0, 1.0, 0.5)
        bottom = snapshot(tmp_path, "bottom")
        assert not bottom[:12].any() and (bottom[12:] == whole[12:]).all()
        rs.setRaytracingRenderRegion(0.0, 0.0, 1.0, 1.0)
        assert (snapshot(tmp_path, "again") == whole).all()

    def test_samples_change_the_image_and_cores_and_tiles_do_not(self, tmp_path, keep):
        keep("RaytracingImageSamples", "RaytracingCores")
        rs.setRaytracingImageSamples(4)
        four = snapshot(tmp_path, "four", ssf=1)
        rs.setRaytracingCores(1)
        rs.setMaxClusterTileSize(256)
        try:
            assert (snapshot(tmp_path, "one-core", ssf=1) == four).all()
        finally:
            rs.setMaxClusterTileSize(32)
        rs.setRaytracingImageSamples(1)
        assert (snapshot(tmp_path, "one", ssf=1) != four).any()


class TestRayFile:
    @staticmethod
    def read(path):
        lines = path.read_text().splitlines()
        header = lines[0].split()
        rays = [[float(v) for v in line.split()] for line in lines[1:]]
        return header, rays

    def test_rays_land_from_the_lights_and_the_file_repeats(self, tmp_path):
        path = tmp_path / "light.rays"
        assert rs.generateRayFile(filename=str(path), numPhotons=500, maxDepth=3) is True
        header, rays = self.read(path)
        assert header[:2] == ["oxlin-rays", "1"]
        assert [int(v) for v in header[2:]] == [len(rays), 500, 3]
        assert 0 < len(rays) <= 500 * 3
        for ray in rays:
            assert len(ray) == 9
            assert abs(sum(c * c for c in ray[3:6]) - 1.0) < 1e-4
            assert min(ray[6:]) >= 0.0 and max(ray[6:]) > 0.0
        again = tmp_path / "again.rays"
        assert rs.generateRayFile(str(again), 500, 3)
        assert again.read_bytes() == path.read_bytes()
        # Written in place: no temporary file stays behind.
        assert sorted(p.name for p in tmp_path.iterdir()) == ["again.rays", "light.rays"]

    def test_one_bounce_keeps_at_most_one_ray_per_photon(self, tmp_path):
        path = tmp_path / "direct.rays"
        assert rs.generateRayFile(str(path), 300, 1)
        header, rays = self.read(path)
        assert 0 < len(rays) <= 300

    def test_a_file_that_cannot_be_written_is_reported(self, tmp_path, capfd):
        path = tmp_path / "missing" / "light.rays"
        capfd.readouterr()
        assert rs.generateRayFile(str(path), 10, 2) is False
        err = capfd.readouterr().err
        assert err.startswith("[error] Can't write the ray file '%s': " % path), err
        assert not path.parent.exists()


def test_material_overrides_are_switched_off_in_every_material_that_has_them(run_oxlin):
    done = run_oxlin("import oxRenderSettings\noxRenderSettings.disableRaytracingOverrides()\n",
                     options=("--trace-host-calls",))
    assert done.returncode == 0, done.stderr
    calls = re.findall(r"call osg::UberMaterialBase::setOverride(\w+)\((.*)\)", done.stderr)
    overrides = ["ReflectionQuality", "IBLQuality", "IlluminationMode", "TraceDepth"]
    assert sorted(calls) == sorted((override, material + ", false")
                                   for override in overrides for material in ["Glass", "Chrome"])


def test_render_queue_presets_round_trip(keep):
    keep("RaytracingImageSamples", "RaytracingStillFrameQualityMode")
    rs.setRaytracingImageSamples(13)
    rs.setRaytracingStillFrameQualityMode(1)
    rs.addPreset("raytracing test job")
    rs.setRaytracingImageSamples(99)
    rs.setRaytracingStillFrameQualityMode(3)
    rs.applyPreset("no such job")
    assert rs.getRaytracingImageSamples() == 99
    rs.applyPreset("raytracing test job")
    assert (rs.getRaytracingImageSamples(), rs.getRaytracingStillFrameQualityMode()) == (13, 1)

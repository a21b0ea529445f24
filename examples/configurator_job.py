"""The configurator job of `make demo`: the turntable's eight viewpoints crossed with the paint
and rim variant sets of the example scene, the beauty and three more passes at a small size.

    oxlin --no-gui showroom.oxp --script configurator_job.py -- OUTPUT_FOLDER

Prints the files the job will write, renders them, and fails unless exactly those were
written."""

import os
import sys
import time

out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "configurator")
os.makedirs(out, exist_ok=True)
started = time.time()

setRenderView("Turntable")
setUseRenderVariantSets(True)
clearRenderVariantSetGroups()
setRenderVariantSets("Paint", ["Paint Red", "Paint Blue", "Paint Silver"])
setRenderVariantSets("Rims", ["Rims Sport", "Rims Classic"])
setRenderPixelResolution(192, 108, 72)
setUseRenderPasses(True)
setRenderPasses(["beauty", "albedo", "normal", "depth"])
setRenderFilename(os.path.join(out, "showroom.png"))
setRaytracingImageSamples(4)

listed = getRenderOutputFilenames()
for name in listed:
    print(name)
startRenderToFile(True)

# Files written by this run, whether new or replaced (a second demo run replaces them all);
# the job may write into subfolders (one per camera track).
paths = (os.path.join(folder, name) for folder, _, names in os.walk(out) for name in names)
written = sorted(path for path in paths if os.path.getmtime(path) >= started - 1)
unlisted = sorted(set(written) - set(listed))
missing = sorted(set(listed) - set(written))
if unlisted or missing:
    sys.exit("%d files written that weren't listed (%s), %d listed that weren't written (%s)"
             % (len(unlisted), unlisted[:3], len(missing), missing[:3]))
print("%d files listed and written to %s" % (len(listed), out))

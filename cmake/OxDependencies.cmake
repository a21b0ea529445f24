# Third-party libraries, all from Debian 12 packages (scripts/install-deps.sh).

# The python3 first on PATH may be a private interpreter; headers, library and Boost.Python
# must all be Debian's Python 3.11.
set(Python3_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "Python interpreter matching Boost.Python")
find_package(Python3 3.11 EXACT REQUIRED COMPONENTS Interpreter Development)
find_package(Boost 1.74 REQUIRED COMPONENTS python311)
find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Test)
find_package(pugixml REQUIRED)
find_package(TinyGLTF REQUIRED)
find_package(nlohmann_json 3 REQUIRED)
find_package(Threads REQUIRED)
find_package(TBB REQUIRED)
find_package(embree 3 REQUIRED)
find_package(OpenImageIO REQUIRED)
# Debian's OpenImageIO package names an include folder (opencv4) that isn't installed.
get_target_property(_ox_oiio_includes OpenImageIO::OpenImageIO INTERFACE_INCLUDE_DIRECTORIES)
list(FILTER _ox_oiio_includes EXCLUDE REGEX "opencv4")
set_target_properties(OpenImageIO::OpenImageIO PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${_ox_oiio_includes}"
    INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "")
find_package(PkgConfig REQUIRED)
pkg_check_modules(OX_LCMS2 REQUIRED IMPORTED_TARGET lcms2)
pkg_check_modules(OX_FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil libswscale)

if(OX_BUILD_TESTS)
    find_package(GTest REQUIRED)
endif()
if(OX_BUILD_BENCH)
    find_package(benchmark REQUIRED)
endif()

# Warning flags for our own targets; third-party headers are included as system headers.
add_library(ox_warnings INTERFACE)
target_compile_options(ox_warnings INTERFACE -Wall -Wextra)
if(OX_WERROR)
    target_compile_options(ox_warnings INTERFACE -Werror)
endif()

add_library(ox_sanitize INTERFACE)
if(OX_SANITIZE)
    target_compile_options(ox_sanitize INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(ox_sanitize INTERFACE -fsanitize=address,undefined)
endif()
# The fuzzing build: coverage for libFuzzer and the sanitizers in every target of the project;
# the harnesses link the fuzzer's own main (fuzz/CMakeLists.txt).
if(OX_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "OX_FUZZ needs clang: configure with CC=clang CXX=clang++")
    endif()
    target_compile_options(ox_sanitize INTERFACE -fsanitize=fuzzer-no-link,address,undefined
        -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(ox_sanitize INTERFACE -fsanitize=address,undefined)
endif()

# Applies our warning and sanitizer settings to a target of this project.
function(ox_target_defaults target)
    target_link_libraries(${target} PRIVATE ox_warnings ox_sanitize)
endfunction()

# WebAssembly, by Debian's emscripten.
#
# Exceptions and longjmp are the processor's own: every object has to be compiled for that. The compiler has its node look for
# modules where Debian keeps them, which the node of another vendor does not: without that the checks of CMake fail silently.
set(VX_EMSCRIPTEN /usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
if(NOT EXISTS ${VX_EMSCRIPTEN})
    message(FATAL_ERROR "there is no emscripten here: install Debian's package of that name")
endif()
include(${VX_EMSCRIPTEN})
set(ENV{NODE_PATH} /usr/share/nodejs)
# What this emscripten writes for Node takes a global "fetch" for a page's.
set(CMAKE_CROSSCOMPILING_EMULATOR "/usr/bin/node;--no-experimental-fetch")
set(CMAKE_C_FLAGS_INIT "-fwasm-exceptions -sSUPPORT_LONGJMP=wasm -ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT ${CMAKE_C_FLAGS_INIT})

# Libraries come from this folder alone, never from the machine.
get_filename_component(VX_WEB_LIBRARIES ${CMAKE_CURRENT_LIST_DIR}/../build/web-libs ABSOLUTE)
set(ENV{PKG_CONFIG_LIBDIR} ${VX_WEB_LIBRARIES}/lib/pkgconfig)
list(APPEND CMAKE_FIND_ROOT_PATH ${VX_WEB_LIBRARIES})

# CMake would look for the encoders of .xz too.
foreach(part AUTO_DECODER EASY_ENCODER LZMA_PRESET)
    set(LIBLZMA_HAS_${part} TRUE)
endforeach()

# GoogleTest from the sources that Debian's package "googletest" installs, so that it fits whatever target we build.

set(VX_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")

# A function, so that the flags stay in here.
function(vx_add_googletest)
    set(INSTALL_GTEST OFF)
    set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
    string(APPEND CMAKE_CXX_FLAGS_RELEASE " -O1 -w")
    add_subdirectory(${VX_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    if(VX_SANITIZE) # its own code is not what we look for faults in, and takes long to build so
        foreach(library gtest gtest_main gmock gmock_main)
            target_compile_options(${library} PRIVATE -fno-sanitize=all)
        endforeach()
    endif()
endfunction()

if(EXISTS ${VX_GOOGLETEST_SOURCE}/CMakeLists.txt)
    vx_add_googletest()
    include(GoogleTest)
else()
    message(STATUS "No tests: there is no GoogleTest in ${VX_GOOGLETEST_SOURCE} (./check installs it)")
endif()

# 32-bit x86 on a 64-bit machine. Debian: g++-12-multilib.
#
# Doubles are computed by SSE2: the older floating-point unit would round differently from every other target.
# The kernel's headers serve both widths, but only the unversioned gcc-multilib, which excludes cross compilers,
# puts them where -m32 looks.
set(CMAKE_C_COMPILER gcc-12)
set(CMAKE_CXX_COMPILER g++-12)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -idirafter /usr/include/x86_64-linux-gnu")
set(CMAKE_CXX_FLAGS_INIT ${CMAKE_C_FLAGS_INIT})

// Read before a source that knows qpdf, by Clang alone: see CMakeLists.txt.
//
// Headers of qpdf keep a vector of a class inside that class. Clang 14 takes that where vectors are not constexpr.
#pragma once

#include <string>

#ifdef __clang__
#pragma push_macro("_GLIBCXX20_CONSTEXPR")
#undef _GLIBCXX20_CONSTEXPR
#define _GLIBCXX20_CONSTEXPR
#define __fill_a1 __fill_a1_of_bits // it was declared constexpr before
#include <vector>
#undef __fill_a1
#pragma pop_macro("_GLIBCXX20_CONSTEXPR")
#endif

// Documents to measure with: made up, the same bytes for the same size.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vxbench
{

// Outlines of curves and lines with one to four decimals, filled and stroked in changing colours: what drawings
// are mostly made of. At least size bytes, ended properly.
std::string MakePathDocument(size_t size);

// The same document with so many lines of a hundred more, each an operator of a group or of a spot ink.
std::string WithStructure(std::string_view document, size_t percent);

// Lines of text, each placed and set in another of a few fonts than the line before.
std::string MakeTextDocument(int strings);
constexpr int kTextFonts = 8;
std::string TextFontName(int font);

// Paragraphs in three fonts that every machine has, black. At least size bytes.
std::string MakeTextPage(size_t size);
constexpr const char *kPageFonts[] = {"Helvetica", "Times-Roman", "Courier"};

// The same fonts as drawings have them: lines one below the other, of 12 to 48 points, and when the page is full a blank
// sheet over it. At least size bytes.
std::string MakeTextLines(size_t size);

// The page that all documents here are made for.
constexpr int kPageWidth = 1000, kPageHeight = 800;

// So many outlines of curves, each filled with a gradient, linear and radial in turn, of process colours.
std::string MakeGradientDocument(int instances);
// The same with as many outlines as fill at least size bytes.
std::string MakeGradientPage(size_t size);
// The same outlines, each filled with one colour.
std::string MakeFlatDocument(int instances);

} // namespace vxbench

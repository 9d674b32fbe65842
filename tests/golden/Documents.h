// The documents that tests of a whole parse run over: the golden ones with their traces, and the samples.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace vxtest
{

struct TestDocument {
    std::string name; // the file's name without folder and ending
    std::string path;
    friend void PrintTo(const TestDocument &document, std::ostream *to) { *to << document.path; }
};

// Sorted by name.
const std::vector<TestDocument> &GoldenDocuments();
const std::vector<TestDocument> &Samples();
// The samples made by hand: small enough to be parsed once for each of their bytes.
const std::vector<TestDocument> &SmallSamples();

// The trace beside a golden document, without comments and blank lines.
std::vector<std::string> ReadTrace(const TestDocument &document);
// The whole file; a file that cannot be read is a failure of the test.
std::string ReadBytes(const std::string &path);

struct DocumentName {
    std::string operator()(const testing::TestParamInfo<TestDocument> &info) const;
};

} // namespace vxtest

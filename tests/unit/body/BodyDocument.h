// Wraps body lines into the smallest document of each generation, so that a case is only the lines it is about.
#pragma once

#include <string>
#include <string_view>

namespace vxtest
{

// The header comments that make a document of this version, 2 to 5.
inline std::string HeaderOfVersion(int version)
{
    std::string header = "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n";
    switch (version) {
    case 2:
        header += "%%DocumentProcSets:Tavro_Vellumcraft_ProcSet 1 0\n";
        break;
    case 3:
        header += "%%+ procset Tavro_Vellumcraft_VX3 1 0\n";
        break;
    case 4:
        header += "%%Creator: Tavro Vellumcraft(TM) for Windows, version 4.0\n";
        break;
    default:
        header += "%VX5_FileFormat 3\n";
        break;
    }
    return header + "%%EndComments\n";
}

// setup is everything from "%%BeginSetup" to the body's last line.
inline std::string DocumentWithSetup(int version, std::string_view setup)
{
    return HeaderOfVersion(version) + std::string(setup) + "\n%%EOF\n";
}

inline std::string DocumentOfVersion(int version, std::string_view lines)
{
    return DocumentWithSetup(version, "%%BeginSetup\n%%EndSetup\n" + std::string(lines));
}

inline std::string Document(std::string_view lines)
{
    return DocumentOfVersion(5, lines);
}

inline std::string Repeated(std::string_view text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

} // namespace vxtest

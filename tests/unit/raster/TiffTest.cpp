// The file: read back by libtiff, it has the rows that were written. And what is kept of plates in the meantime.
#include "devices/raster/PlateStore.h"
#include "devices/raster/TiffWriter.h"

#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <tiffio.h>

namespace vxhost::raster
{
namespace
{

std::string BytesOf(std::span<const std::byte> bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

// A file in memory that says what a sink is not given.
struct HeldFile {
    std::string bytes;
    size_t most = SIZE_MAX;
    bool isOfMemory = false; // that there is no room is a lack of memory

    ByteSinks Sinks()
    {
        return {[this](std::span<const std::byte> added) -> Failure {
                    bytes += BytesOf(added);
                    if (bytes.size() > most && isOfMemory)
                        throw std::bad_alloc();
                    return bytes.size() > most ? Failure{FailureKind::CannotWrite, "full"} : Failure();
                },
                [this](uint64_t at, std::span<const std::byte> over) -> Failure {
                    EXPECT_LE(at + over.size(), bytes.size());
                    bytes.replace(at, over.size(), BytesOf(over));
                    return {};
                }};
    }
};

// A level that neither repeats nor follows from its neighbour.
uint8_t LevelAt(size_t ink, size_t x, size_t y)
{
    return static_cast<uint8_t>((ink * 61 + x * x * 7 + y * 31 + x * y) % 251);
}

std::vector<std::vector<uint8_t>> RowsOf(size_t inks, size_t width, size_t y)
{
    std::vector<std::vector<uint8_t>> rows(inks, std::vector<uint8_t>(width));
    for (size_t i = 0; i < inks; ++i) {
        for (size_t x = 0; x < width; ++x)
            rows[i][x] = LevelAt(i, x, y);
    }
    return rows;
}

std::vector<const uint8_t *> PlacesOf(const std::vector<std::vector<uint8_t>> &rows)
{
    std::vector<const uint8_t *> places;
    for (const auto &row : rows)
        places.push_back(row.data());
    return places;
}

TiffHeader HeaderOf(size_t inks, int width, int height)
{
    TiffHeader header;
    header.width = width;
    header.height = height;
    for (size_t i = 0; i < inks; ++i)
        header.inks.push_back(std::string("Ink").append(std::to_string(i)));
    return header;
}

Failure Write(const TiffHeader &header, HeldFile *file)
{
    TiffWriter writer(header, file->Sinks());
    const size_t samples = std::max<size_t>(header.inks.size(), 1);
    for (int y = 0; y < header.height; ++y)
        writer.WriteRow(PlacesOf(RowsOf(samples, static_cast<size_t>(header.width), static_cast<size_t>(y))));
    return writer.End();
}

// Gives libtiff the bytes of a file.
struct ReadFile {
    const std::string &bytes;
    uint64_t at = 0;
    TIFF *tiff;

    explicit ReadFile(const std::string &held) : bytes(held)
    {
        tiff = TIFFClientOpen(
            "", "rm", this,
            [](thandle_t self, void *to, tmsize_t count) -> tmsize_t {
                auto *file = static_cast<ReadFile *>(self);
                const size_t got =
                    file->bytes.copy(static_cast<char *>(to), static_cast<size_t>(count), file->at);
                file->at += got;
                return static_cast<tmsize_t>(got);
            },
            [](thandle_t, void *, tmsize_t) -> tmsize_t { return 0; },
            [](thandle_t self, toff_t to, int whence) -> toff_t {
                auto *file = static_cast<ReadFile *>(self);
                return file->at = whence == SEEK_SET   ? to
                                  : whence == SEEK_CUR ? file->at + to
                                                       : file->bytes.size() + to;
            },
            [](thandle_t) { return 0; },
            [](thandle_t self) -> toff_t { return static_cast<ReadFile *>(self)->bytes.size(); }, nullptr,
            nullptr);
    }
    ~ReadFile() { TIFFClose(tiff); }
    ReadFile(const ReadFile &) = delete;
    ReadFile &operator=(const ReadFile &) = delete;
};

struct TiffCase {
    const char *name;
    size_t inks; // 0: gray
    int width, height;
    bool isBig;
};

const TiffCase kTiffCases[] = {
    {"Gray", 0, 37, 29, false},      {"OnePixel", 4, 1, 1, false},       {"Process", 4, 37, 29, false},
    {"Spots", 7, 37, 29, false},     {"ManyStrips", 5, 517, 403, false}, {"WideRows", 4, 70001, 2, false},
    {"BigGray", 0, 517, 1403, true}, {"BigSpots", 7, 37, 29, true},
};

class Tiff : public testing::TestWithParam<TiffCase>
{
};

TEST_P(Tiff, HasTheRowsThatWereWritten)
{
    const TiffCase &c = GetParam();
    TiffHeader header = HeaderOf(c.inks, c.width, c.height);
    if (c.isBig)
        header.mostOfPlain = 1000;
    HeldFile file;
    const Failure failure = Write(header, &file);
    ASSERT_FALSE(failure) << failure.text;
    ReadFile read(file.bytes);
    ASSERT_NE(read.tiff, nullptr);
    EXPECT_EQ(TIFFIsBigTIFF(read.tiff) != 0, c.isBig);
    const auto samples = static_cast<size_t>(TIFFScanlineSize(read.tiff)) / static_cast<size_t>(c.width);
    ASSERT_EQ(samples, std::max<size_t>(c.inks, 1));
    std::vector<uint8_t> row(samples * static_cast<size_t>(c.width));
    for (size_t y = 0; y < static_cast<size_t>(c.height); ++y) {
        ASSERT_EQ(TIFFReadScanline(read.tiff, row.data(), static_cast<uint32_t>(y)), 1);
        const auto rows = RowsOf(samples, static_cast<size_t>(c.width), y);
        for (size_t i = 0; i < row.size(); ++i)
            ASSERT_EQ(row[i], rows[i % samples][i / samples]) << "row " << y << ", byte " << i;
    }
}
INSTANTIATE_TEST_SUITE_P(Raster, Tiff, testing::ValuesIn(kTiffCases),
                         [](const auto &tested) { return std::string(tested.param.name); });

// Places of 32 bits reach 4 GiB: 32,768 by 32,768 pixels of four inks are 4 GiB alone. Nothing is drawn to know that.
TEST(TiffFiles, HavePlacesOf64BitsBeforeTheyNeedThem)
{
    const auto version = [](int side) {
        HeldFile file;
        const TiffWriter writer(HeaderOf(4, side, side), file.Sinks());
        return static_cast<int>(file.bytes.at(2));
    };
    EXPECT_EQ(version(32000), 42);
    EXPECT_EQ(version(32768), 43);
}

TEST(TiffFiles, SayWhatCouldNotBeWritten)
{
    HeldFile whole;
    ASSERT_FALSE(Write(HeaderOf(5, 300, 300), &whole));
    for (size_t most = 0; most < whole.bytes.size(); most += whole.bytes.size() / 37 + 1) {
        HeldFile file = {"", most};
        const Failure failure = Write(HeaderOf(5, 300, 300), &file);
        EXPECT_EQ(failure.text, "full") << most;
        EXPECT_TRUE(failure.IsOfWriting());
        HeldFile ofMemory = {"", most, true};
        EXPECT_THROW((void)Write(HeaderOf(5, 300, 300), &ofMemory), std::bad_alloc) << most;
    }
}

struct StoreCase {
    int width, height;
};

class Store : public testing::TestWithParam<StoreCase>
{
};

TEST_P(Store, HasTheRowsOfAllPlates)
{
    const auto [width, height] = GetParam();
    std::string scratch;
    PlateStore store(width, height,
                     {[&](std::span<const std::byte> bytes) {
                          scratch += BytesOf(bytes);
                          return Failure();
                      },
                      [&](uint64_t at, std::span<std::byte> bytes) {
                          std::memcpy(bytes.data(), scratch.data() + at, bytes.size());
                          return Failure();
                      }});
    const auto w = static_cast<size_t>(width);
    for (size_t first : {0U, 4U}) { // four plates, then two
        for (int y = 0; y < height; ++y) {
            const auto rows = RowsOf(6, w, static_cast<size_t>(y));
            const std::vector<const uint8_t *> places = PlacesOf(rows);
            ASSERT_FALSE(store.AddRow(std::span(places).subspan(first, first == 0 ? 4 : 2)));
        }
    }
    for (int y = 0; y < height; ++y) {
        std::vector<const uint8_t *> places;
        ASSERT_FALSE(store.ReadRow(y, &places));
        const auto rows = RowsOf(6, w, static_cast<size_t>(y));
        ASSERT_EQ(places.size(), rows.size());
        for (size_t i = 0; i < rows.size(); ++i)
            ASSERT_EQ(std::memcmp(places[i], rows[i].data(), w), 0) << "row " << y << " of " << i;
    }
}
INSTANTIATE_TEST_SUITE_P(
    Plates, Store,
    testing::Values(StoreCase{1, 1}, StoreCase{64, 1024}, StoreCase{517, 300}, StoreCase{70001, 3}),
    [](const auto &tested) {
        return std::to_string(tested.param.width).append("By").append(std::to_string(tested.param.height));
    });

TEST(Stores, SayWhatCannotBeKept)
{
    PlateStore store(4, 1,
                     {[](std::span<const std::byte>) {
                          return Failure{FailureKind::CannotWrite, "full"};
                      },
                      [](uint64_t, std::span<std::byte>) { return Failure(); }});
    const std::vector<uint8_t> row(4);
    const uint8_t *place = row.data();
    EXPECT_EQ(store.AddRow({&place, 1}).text, "full");
}

} // namespace
} // namespace vxhost::raster

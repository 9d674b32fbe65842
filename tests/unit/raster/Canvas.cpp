#include "tests/unit/raster/Canvas.h"

#include <cctype>
#include <gtest/gtest.h>
#include <sstream>

namespace vxhost
{

namespace
{

class Script
{
  public:
    explicit Script(Device *device) : device_(device) {}

    void Run(const std::string &text)
    {
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            size_t used = 0;
            double number = 0;
            try {
                number = std::stod(word, &used);
            } catch (const std::exception &) {
                used = 0;
            }
            if (used == word.size())
                operands_.push_back(number);
            else
                RunOperator(word);
        }
    }

  private:
    void RunOperator(const std::string &name)
    {
        const std::vector<double> v = std::move(operands_);
        operands_.clear();
        if (name == "m")
            Add(Verb::Move, v, 2);
        else if (name == "l")
            Add(Verb::Line, v, 2);
        else if (name == "c")
            Add(Verb::Curve, v, 6);
        else if (name == "h")
            Add(Verb::Close, v, 0);
        else if (name == "re")
            AddRectangle(v);
        else if (name == "f")
            device_->FillPath(path_, paint_);
        else if (name == "s")
            device_->StrokePath(path_, style_, paint_);
        else if (name == "W")
            device_->ClipPath(path_);
        else if (name == "q")
            device_->Save();
        else if (name == "Q")
            device_->Restore();
        else if (name == "g")
            paint_.colour = {ColourSpace::Gray, {v.at(0), 0, 0, 0}};
        else if (name == "k")
            paint_.colour = {ColourSpace::Cmyk, {v.at(0), v.at(1), v.at(2), v.at(3)}};
        else if (name == "o")
            paint_.overprint = v.at(0) != 0;
        else if (name == "w")
            style_.width = v.at(0);
        else if (name == "J")
            style_.cap = static_cast<LineCap>(v.at(0));
        else if (name == "j")
            style_.join = static_cast<LineJoin>(v.at(0));
        else if (name == "M")
            style_.miterLimit = v.at(0);
        else if (name == "d") {
            style_.dashes.assign(v.begin(), v.end() - 1);
            style_.dashPhase = v.back();
        } else if (name == "cm")
            style_.matrix = {v.at(0), v.at(1), v.at(2), v.at(3), v.at(4), v.at(5)};
        else if (name != "n")
            ADD_FAILURE() << "no operator " << name;
        if (name == "f" || name == "s" || name == "W" || name == "n")
            path_.Clear();
    }
    void Add(Verb verb, const std::vector<double> &v, size_t count)
    {
        ASSERT_EQ(v.size(), count);
        path_.verbs.push_back(verb);
        for (size_t i = 0; i < count; i += 2)
            path_.points.push_back({v[i], v[i + 1]});
    }
    void AddRectangle(const std::vector<double> &v)
    {
        ASSERT_EQ(v.size(), 4U);
        Add(Verb::Move, {v[0], v[1]}, 2);
        Add(Verb::Line, {v[2], v[1]}, 2);
        Add(Verb::Line, {v[2], v[3]}, 2);
        Add(Verb::Line, {v[0], v[3]}, 2);
        Add(Verb::Close, {}, 0);
    }

    Device *device_;
    Path path_;
    Paint paint_;
    StrokeStyle style_;
    std::vector<double> operands_;
};

} // namespace

RasterOptions PlainOptions()
{
    RasterOptions options;
    options.dpi = 72;
    options.profile = "none";
    return options;
}

void DrawScript(const std::string &script, Device *device)
{
    Script(device).Run(script);
}

std::string TryDraw(const std::string &script, const Box &box, const RasterOptions &options, Picture *picture)
{
    std::string error;
    const auto device = MakePictureDevice(options, picture, &error);
    if (device == nullptr)
        return error;
    device->BeginPage({box, {}, {}});
    DrawScript(script, device.get());
    return device->EndPage().text;
}

Picture Draw(const std::string &script, double width, double height, const RasterOptions &options)
{
    Picture picture;
    EXPECT_EQ(TryDraw(script, {0, 0, width, height}, options, &picture), "");
    return picture;
}

std::string PixelAt(const Picture &picture, int column, int row)
{
    if (column >= picture.width || row >= picture.height)
        return "outside";
    const uint8_t *pixel =
        picture.rgba.data() +
        4 * (static_cast<size_t>(row) * static_cast<size_t>(picture.width) + static_cast<size_t>(column));
    std::string text =
        std::to_string(pixel[0]) + ' ' + std::to_string(pixel[1]) + ' ' + std::to_string(pixel[2]);
    if (pixel[3] != 255)
        text += ' ' + std::to_string(pixel[3]);
    return text;
}

std::string Sketch(const Picture &picture)
{
    std::string text;
    for (int row = 0; row < picture.height; ++row) {
        for (int column = 0; column < picture.width; ++column) {
            const std::string pixel = PixelAt(picture, column, row);
            text += pixel == "0 0 0" ? '#' : pixel == "255 255 255" ? '.' : '+';
        }
        text += '\n';
    }
    return text;
}

} // namespace vxhost

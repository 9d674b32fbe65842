#include "library/Objects.h"

#include "devices/objects/ObjectFinder.h"
#include "library/ValuesJson.h"

#include <string_view>

namespace vxhost
{

namespace
{

using Json = nlohmann::ordered_json;

std::string_view NameOf(ObjectKind kind)
{
    constexpr std::string_view kNames[] = {"fill", "stroke", "text", "blend"};
    return kNames[static_cast<size_t>(kind)];
}

Json ObjectJson(const FoundObject &object)
{
    Json json;
    json["kind"] = NameOf(object.kind);
    json["colour"] = ColourJson(object.paint.colour);
    json["overprint"] = object.paint.overprint;
    json["layer"] = object.layer ? Json(object.layer->name) : Json();
    json["printing"] = !object.layer || object.layer->isPrinting;
    json["box"] = BoxJson(object.box);
    if (object.kind == ObjectKind::Stroke)
        json["width"] = Rounded(object.lineWidth);
    if (object.kind == ObjectKind::Text) {
        json["text"] = object.text;
        json["font"] = object.font;
        json["served"] = object.served;
        json["size"] = Rounded(object.size);
    }
    return json;
}

} // namespace

// The page is as large as it may be: what lies beyond the box of a drawing is found too.
Outcome FindObject(Reading &reading, Point at, double within, nlohmann::ordered_json *json)
{
    ObjectFinder finder(at, within);
    Page page;
    page.box = {at.x - within, at.y - within, at.x + within, at.y + within};
    Outcome outcome = reading.Draw(page, finder);
    *json = finder.Found() ? ObjectJson(*finder.Found()) : Json();
    return outcome;
}

} // namespace vxhost

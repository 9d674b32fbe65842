#include "host/reading/LayerChoice.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr size_t kMostNamed = 20; // layers that a message names

bool IsNamed(const std::vector<std::string> &names, const Layer &layer)
{
    return std::ranges::find(names, layer.name) != names.end();
}

std::string Quoted(std::string_view name)
{
    return std::string("\"").append(name).append("\"");
}

// Returns the name as a list of names has it.
std::string Escaped(std::string_view name)
{
    std::string escaped;
    for (const char character : name)
        escaped.append(character == ',' || character == '\\' ? "\\" : "").append(1, character);
    return escaped;
}

std::string ListLayers(const std::vector<Layer> &layers)
{
    if (layers.empty())
        return "the drawing has no layers";
    std::string text = "there are ";
    for (size_t i = 0; i < layers.size() && i < kMostNamed; ++i)
        text.append(i == 0 ? "" : ", ").append(Quoted(Escaped(layers[i].name)));
    if (layers.size() > kMostNamed)
        text.append(" and ").append(std::to_string(layers.size() - kMostNamed)).append(" more");
    return text;
}

} // namespace

std::string ChooseLayers(const LayerChoice &choice, std::vector<Layer> *layers)
{
    for (const auto *names : {&choice.shown, &choice.hidden}) {
        for (const std::string &name : *names) {
            if (std::ranges::find(*layers, name, &Layer::name) == layers->end())
                return "no layer " + Quoted(name) + ": " + ListLayers(*layers);
        }
    }
    // A layer stands behind the one around it.
    for (Layer &layer : *layers) {
        const Layer *around = layer.parent < 0 ? nullptr : &(*layers)[static_cast<size_t>(layer.parent)];
        const bool isPainted =
            choice.shown.empty() ? choice.isAll || layer.isPrinting : IsNamed(choice.shown, layer);
        const bool isWithin = around == nullptr || choice.shown.empty() || IsNamed(choice.shown, *around);
        if (isPainted && !isWithin)
            return "layer " + Quoted(layer.name) + " is within " + Quoted(around->name) + ": name that too";
        layer.isPainted = isPainted && !IsNamed(choice.hidden, layer);
    }
    // Whoever hides a layer hides what is within it; what does not print hides nothing.
    for (Layer &layer : *layers) {
        for (int around = layer.parent; around >= 0; around = (*layers)[static_cast<size_t>(around)].parent)
            layer.isPainted =
                layer.isPainted && !IsNamed(choice.hidden, (*layers)[static_cast<size_t>(around)]);
    }
    return "";
}

} // namespace vxhost

#include "devices/pdf/OptionalContent.h"

#include <string_view>

namespace vxhost::pdf
{

namespace
{

std::string NameOf(size_t number)
{
    return "Layer" + std::to_string(number + 1);
}

std::string State(std::string_view key, bool isOn)
{
    return Dictionary().Add(key, isOn ? "/ON" : "/OFF").Value();
}

// A layer that does not print is there because somebody asked for it: it is hidden until it is switched on.
std::string GroupOf(const Layer &layer)
{
    Dictionary usage;
    usage.Add("Print", State("PrintState", layer.isPrinting));
    usage.Add("View", State("ViewState", layer.isPrinting));
    usage.Add("Export", State("ExportState", layer.isPrinting));
    Dictionary group;
    group.Add("Type", "/OCG").Add("Name", TextValue(layer.name)).Add("Usage", usage.Value());
    return group.Value();
}

// The groups follow what a reader does with the page.
std::string EventsOf(const std::string &groups)
{
    std::string events;
    for (const std::string event : {"/View", "/Print", "/Export"})
        events +=
            Dictionary().Add("Event", event).Add("Category", ArrayValue(event)).Add("OCGs", groups).Value();
    return ArrayValue(events);
}

} // namespace

std::string OptionalContent::Begin(const Layer &layer)
{
    const size_t number = layers_.size();
    (open_.empty() ? outermost_ : layers_[open_.back()].children).push_back(number);
    layers_.push_back({&layer, {}});
    open_.push_back(number);
    return NameOf(number);
}

// Lists the topmost first, as editors do; those within a layer stand in an array behind it.
std::string OptionalContent::OrderOf(const std::vector<size_t> &layers,
                                     const std::vector<Reference> &groups) const
{
    std::string order;
    for (auto number = layers.rbegin(); number != layers.rend(); ++number) {
        order.append(ValueOf(groups[*number])).append(" ");
        if (!layers_[*number].children.empty())
            order += OrderOf(layers_[*number].children, groups);
    }
    return ArrayValue(order);
}

void OptionalContent::AddTo(PdfFile *file, bool isForLevel, Dictionary *catalog, Dictionary *resources) const
{
    std::vector<Reference> groups, hidden, locked;
    for (const Content &content : layers_) {
        const Reference group = file->Add(GroupOf(*content.layer));
        groups.push_back(group);
        resources->Add(NameOf(groups.size() - 1), group);
        if (!content.layer->isPrinting)
            hidden.push_back(group);
        if (!content.layer->isEnabled)
            locked.push_back(group);
    }
    const std::string all = ArrayValue(groups);
    Dictionary defaults;
    defaults.Add("Order", OrderOf(outermost_, groups)).Add("OFF", ArrayValue(hidden));
    defaults.Add("Locked", ArrayValue(locked));
    if (isForLevel)
        defaults.Add("Name", TextValue("Layers"));
    else
        defaults.Add("AS", EventsOf(all));
    catalog->Add("OCProperties", Dictionary().Add("OCGs", all).Add("D", defaults.Value()).Value());
}

} // namespace vxhost::pdf

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

QPDFObjectHandle State(const char *key, bool isOn)
{
    QPDFObjectHandle state = QPDFObjectHandle::newDictionary();
    state.replaceKey(key, MakeName(isOn ? "ON" : "OFF"));
    return state;
}

// A layer that does not print is there because somebody asked for it: it is hidden until it is switched on.
QPDFObjectHandle GroupOf(const Layer &layer)
{
    QPDFObjectHandle usage = QPDFObjectHandle::newDictionary();
    usage.replaceKey("/Print", State("/PrintState", layer.isPrinting));
    usage.replaceKey("/View", State("/ViewState", layer.isPrinting));
    usage.replaceKey("/Export", State("/ExportState", layer.isPrinting));
    QPDFObjectHandle group = QPDFObjectHandle::newDictionary();
    group.replaceKey("/Type", MakeName("OCG"));
    group.replaceKey("/Name", QPDFObjectHandle::newUnicodeString(layer.name));
    group.replaceKey("/Usage", usage);
    return group;
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
QPDFObjectHandle OptionalContent::OrderOf(const std::vector<size_t> &layers,
                                          const std::vector<QPDFObjectHandle> &groups) const
{
    QPDFObjectHandle order = QPDFObjectHandle::newArray();
    for (auto number = layers.rbegin(); number != layers.rend(); ++number) {
        order.appendItem(groups[*number]);
        if (!layers_[*number].children.empty())
            order.appendItem(OrderOf(layers_[*number].children, groups));
    }
    return order;
}

void OptionalContent::AddTo(PdfFile *file, QPDFObjectHandle *resources) const
{
    std::vector<QPDFObjectHandle> groups;
    QPDFObjectHandle all = QPDFObjectHandle::newArray(), hidden = QPDFObjectHandle::newArray(),
                     locked = QPDFObjectHandle::newArray();
    for (const Content &content : layers_) {
        groups.push_back(file->Add(GroupOf(*content.layer)));
        resources->replaceKey(KeyOf(NameOf(groups.size() - 1)), groups.back());
        all.appendItem(groups.back());
        if (!content.layer->isPrinting)
            hidden.appendItem(groups.back());
        if (!content.layer->isEnabled)
            locked.appendItem(groups.back());
    }
    QPDFObjectHandle defaults = QPDFObjectHandle::newDictionary();
    defaults.replaceKey("/Order", OrderOf(outermost_, groups));
    defaults.replaceKey("/OFF", hidden);
    defaults.replaceKey("/Locked", locked);
    QPDFObjectHandle events = QPDFObjectHandle::newArray();
    for (const char *event : {"View", "Print", "Export"}) {
        QPDFObjectHandle automatic = QPDFObjectHandle::newDictionary();
        automatic.replaceKey("/Event", MakeName(event));
        automatic.replaceKey("/Category", QPDFObjectHandle::newArray({MakeName(event)}));
        automatic.replaceKey("/OCGs", all);
        events.appendItem(automatic);
    }
    defaults.replaceKey("/AS", events);
    QPDFObjectHandle properties = QPDFObjectHandle::newDictionary();
    properties.replaceKey("/OCGs", all);
    properties.replaceKey("/D", defaults);
    file->Catalog().replaceKey("/OCProperties", properties);
    file->NeedVersion("1.5");
}

} // namespace vxhost::pdf

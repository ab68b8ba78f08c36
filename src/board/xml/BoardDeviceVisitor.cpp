// SPDX-License-Identifier: Apache-2.0
#include "BoardDeviceVisitor.h"

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using dmodel::DeviceResources;
using zan::xml::any_name;
using zan::xml::AttributeRow;
using zan::xml::AttributeState;
using zan::xml::call;
using zan::xml::check_attributes;
using zan::xml::find_word;
using zan::xml::outermost;
using zan::xml::read_attributes;
using zan::xml::read_rows;
using zan::xml::read_to;
using zan::xml::Word;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

namespace {

// Where the number of an element goes, and how many of the device's cells one of them is.
struct Resource {
    unsigned int DeviceResources::*count;
    unsigned int cells;
};
constexpr Word<Resource> resources[] = {
    {"lcells", {&DeviceResources::les, 2}}, {"les", {&DeviceResources::les, 1}},
    {"ffs", {&DeviceResources::ffs, 1}},    {"dsps", {&DeviceResources::dsps, 1}},
    {"rams", {&DeviceResources::rams, 1}},
};

} // namespace

DeviceVisitor::DeviceVisitor(BaseVisitor* parent, BoardSpec* spec)
    : BoardSectionVisitor(elements(), parent, spec) {
}

// The last row stands for every resource, the unknown ones included: their attributes are checked before
// their names.
DeviceVisitor::Rows DeviceVisitor::elements() {
    using Self = DeviceVisitor;
    static constexpr ElementRow rows[] = {
        {"device", outermost, once, call<&Self::visit_device_elem>, call<&Self::leave_device_elem>},
        {"used_resources", "device", once, call<&Self::visit_used_resources_elem>,
         call<&Self::leave_used_resources_elem>},
        {any_name, "device/used_resources", once, call<&Self::visit_used_resources_single_elem>},
    };
    return rows;
}

bool DeviceVisitor::visit_device_elem(const XMLElement& elem) {
    static constexpr AttributeRow<DeviceVisitor, DeviceConfig> rows[] = {
        {"device_model", required, read_to<&DeviceConfig::set_device_model>},
    };
    if (!check_attributes(*this, elem, rows))
        return false;
    ZAN_CONTRACT(!m_spec->has_device_config(), "!m_spec->has_device_config()");
    m_spec->set_device_config(new DeviceConfig);
    return read_rows(*this, elem, rows, m_spec->get_device_config()) == AttributeState::good;
}

bool DeviceVisitor::leave_device_elem(const XMLElement& elem) {
    return m_spec->get_device_config().has_used_resources() ||
           report_error(elem, "Used device resources (<used_resources>) must be defined.");
}

bool DeviceVisitor::visit_used_resources_elem(const XMLElement& elem) {
    if (!expect_no_attributes(elem))
        return false;
    DeviceConfig& device = m_spec->get_device_config();
    ZAN_CONTRACT(!device.has_used_resources(), "!device.has_used_resources()");
    device.set_used_resources(new DeviceResources);
    return true;
}

bool DeviceVisitor::visit_used_resources_single_elem(const XMLElement& elem) {
    struct Count {
        unsigned int num = 0;
    };
    static constexpr AttributeRow<DeviceVisitor, Count> rows[] = {{"num", required, read_to<&Count::num>}};
    Count count;
    if (!read_attributes(*this, elem, rows, count))
        return false;
    const Word<Resource>* resource = find_word(resources, elem.Value());
    if (!resource)
        return report_unexpected_elem(elem, "");
    DeviceResources& used = m_spec->get_device_config().get_used_resources();
    used.*resource->value.count = resource->value.cells * count.num;
    return true;
}

// With both <lcells> and <les> the element is not left, though nothing is reported: the process then stops
// where <device> is left. That end is part of the behaviour, so it isn't a fault to be mended here.
bool DeviceVisitor::leave_used_resources_elem(const XMLElement& elem) {
    constexpr std::string_view lcells = "device/used_resources/lcells";
    for (const char* path :
         {"device/used_resources/ffs", "device/used_resources/dsps", "device/used_resources/rams"}) {
        if (!expect_once(elem, path))
            return false;
    }
    if (count_of("device/used_resources/les") + count_of(lcells) == 1)
        return true;
    expect_once(elem, lcells);
    return false;
}

} // namespace zan::board::xml

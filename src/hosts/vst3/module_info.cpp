// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst3/module_info.h"

#include <string_view>

#include "foundation/text/exception.h"
#include "pluginterfaces/base/ipluginbase.h"

using namespace Steinberg;

namespace {

// A JSON string. Bytes of UTF-8 stand as they are.
std::string Quoted(std::string_view text) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string quoted = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\') {
            quoted += {'\\', byte};
        } else if (static_cast<unsigned char>(byte) < 0x20) {
            quoted += "\\u00";
            quoted += {kDigits[byte >> 4], kDigits[byte & 0x0f]};
        } else {
            quoted += byte;
        }
    }
    return quoted + '"';
}

std::string Hexadecimal(const TUID id) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string digits;
    for (std::size_t i = 0; i < sizeof(TUID); ++i) {
        const auto byte = static_cast<unsigned char>(id[i]);
        digits += {kDigits[byte >> 4], kDigits[byte & 0x0f]};
    }
    return digits;
}

const char* YesOrNo(bool yes) { return yes ? "true" : "false"; }

std::string FactoryText(const PFactoryInfo& info) {
    const auto has = [&](int32 flag) { return YesOrNo((info.flags & flag) != 0); };
    std::string text = "  \"Factory Info\": {\n";
    text += "    \"Vendor\": " + Quoted(info.vendor) + ",\n";
    text += "    \"URL\": " + Quoted(info.url) + ",\n";
    text += "    \"E-Mail\": " + Quoted(info.email) + ",\n";
    text += "    \"Flags\": {\n";
    text += std::string("      \"Unicode\": ") + has(PFactoryInfo::kUnicode) + ",\n";
    text += std::string("      \"Classes Discardable\": ") + has(PFactoryInfo::kClassesDiscardable);
    text += std::string(",\n      \"Component Non Discardable\": ") +
            has(PFactoryInfo::kComponentNonDiscardable);
    return text + "\n    }\n  },\n";
}

// "Fx|Modulation" as a list.
std::string ListText(std::string_view parts) {
    std::string text = "[";
    while (!parts.empty()) {
        const std::size_t end = std::min(parts.find('|'), parts.size());
        text += (text.size() > 1 ? ", " : "") + Quoted(parts.substr(0, end));
        parts.remove_prefix(std::min(end + 1, parts.size()));
    }
    return text + "]";
}

std::string ClassText(const PClassInfo2& info) {
    std::string text = "    {\n";
    const auto add = [&](const char* key, const std::string& value, bool isLast = false) {
        text += "      " + Quoted(key) + ": " + value + (isLast ? "\n" : ",\n");
    };
    add("CID", Quoted(Hexadecimal(info.cid)));
    add("Category", Quoted(info.category));
    add("Name", Quoted(info.name));
    add("Vendor", Quoted(info.vendor));
    add("Version", Quoted(info.version));
    add("SDKVersion", Quoted(info.sdkVersion));
    add("Sub Categories", ListText(info.subCategories));
    add("Class Flags", std::to_string(info.classFlags));
    add("Cardinality", std::to_string(info.cardinality));
    add("Snapshots", "[]", true);
    return text + "    }";
}

void Check(tresult result) {
    if (result != kResultOk) throw MException("The factory does not tell its classes.");
}

}  // namespace

std::string ModuleInfoText(IPluginFactory3& factory) {
    PFactoryInfo maker;
    Check(factory.getFactoryInfo(&maker));
    std::string classes;
    PClassInfo2 info;
    for (int32 i = 0; i < factory.countClasses(); ++i) {
        Check(factory.getClassInfo2(i, &info));
        classes += (i > 0 ? ",\n" : "") + ClassText(info);
    }
    std::string text = "{\n";
    text += "  \"Name\": " + Quoted(info.name) + ",\n";
    text += "  \"Version\": " + Quoted(info.version) + ",\n";
    return text + FactoryText(maker) + "  \"Classes\": [\n" + classes + "\n  ]\n}\n";
}

#include "Desktop/RemoteConfig/PropertyList.h"

#include <limits>

#include "Desktop/RemoteConfig/PlistHandles.h"

namespace quillmere {
namespace {

std::optional<ConfigValue> scalarOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t boolean = 0;
            plist_get_bool_val(node, &boolean);
            return boolean != 0;
        }
        case PLIST_UINT: {
            std::uint64_t integer = 0;  // two's complement, in spite of its type
            plist_get_uint_val(node, &integer);
            return static_cast<double>(static_cast<std::int64_t>(integer));
        }
        case PLIST_REAL: {
            double real = 0;
            plist_get_real_val(node, &real);
            return real;
        }
        case PLIST_STRING: {
            std::uint64_t length = 0;
            const char* text = plist_get_string_ptr(node, &length);
            return std::string(text, length);
        }
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<ConfigValues> configValuesFromPropertyList(std::span<const std::byte> xml) {
    if (xml.size() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    plist_t made = nullptr;
    plist_from_xml(reinterpret_cast<const char*>(xml.data()),
                   static_cast<std::uint32_t>(xml.size()), &made);
    const PlistRef list(made);
    if (!list || plist_get_node_type(list.get()) != PLIST_DICT) return std::nullopt;

    plist_dict_iter madeIterator = nullptr;
    plist_dict_new_iter(list.get(), &madeIterator);
    const PlistIterator iterator(madeIterator);
    ConfigValues values;
    for (;;) {
        char* key = nullptr;
        plist_t node = nullptr;
        plist_dict_next_item(list.get(), iterator.get(), &key, &node);
        const PlistText owned(key);
        if (!node) return values;
        if (auto value = scalarOf(node)) values[key] = *std::move(value);
    }
}

}  // namespace quillmere

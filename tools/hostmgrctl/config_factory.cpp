// The recorder's factory items as a record: names and values.
#include "config_decode.h"

namespace hostmgrctl {
namespace {

using namespace decode;  // the tables are all about it
using Item = _tagVexoHostMgrFactoryInfo;

// The room bounds how many items the recorder looks at.
constexpr size_t MOST_ITEMS = 512;

constexpr Field ITEM_FIELDS[] = {
    {"name", "name", HOSTMGRCTL_MEMBER(Item, sName), Text},
    {"value", "value", HOSTMGRCTL_MEMBER(Item, sValue), Text},
};

bool IsItem(const Entry& entry) {
    return entry.bytes[offsetof(Item, sName)] != '\0';
}

Section ItemSection() {
    Section section = {"items", nullptr, Form::Rows, ITEM_FIELDS};
    section.stride = sizeof(Item);
    section.exists = IsItem;
    return section;
}

const Section ITEM_SECTIONS[] = {ItemSection()};

}  // namespace

const Record FACTORY_RECORD = {"factory",
                               "factory items",
                               HOSTMGR_CONFIG_FACTORY,
                               MOST_ITEMS * sizeof(Item),
                               "it has no factory file, or none with a value in it: \"hostmgrctl config set "
                               "factory NAME=VALUE\" makes an item",
                               ITEM_SECTIONS};

}  // namespace hostmgrctl

// The platform's factory items: vexo_model_get_host_manager_factory_info and its kin.
#include "core/factory.h"

#include <cstring>

#include "core/faults.h"
#include "vexo_model.h"

namespace {

/** A text that fills its field has no terminator. */
template <size_t N>
std::string TextOf(const char (&field)[N]) {
    return {field, strnlen(field, N)};
}

template <size_t N>
void Fill(const std::string& text, char (&field)[N]) {
    text.copy(field, N);
}

}  // namespace

int vexo_model_get_host_manage_factory_info_num(unsigned int* num) {
    if (simulator::ShallFail(__func__) || num == nullptr) {
        return -1;
    }
    *num = simulator::FactoryItems();
    return 0;
}

int vexo_model_get_host_manager_factory_info(unsigned int index, vexo_hostlib_factory_info* info) {
    if (simulator::ShallFail(__func__) || info == nullptr) {
        return -1;
    }
    const auto item = simulator::FactoryItemAt(index);
    if (!item) {
        return -1;
    }
    *info = {};
    Fill(item->name, info->name);
    Fill(item->value, info->value);
    return 0;
}

int vexo_model_set_host_manager_factory_info_force(vexo_hostlib_factory_info info) {
    return !simulator::ShallFail(__func__) && simulator::SetFactoryItem({TextOf(info.name), TextOf(info.value)}) ? 0
                                                                                                                 : -1;
}

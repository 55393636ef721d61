#include "vexo_utility.h"

// This storey of the recorder has no XML documents yet: creating one fails, as it may on a board.
vexo_xml_operate* vexo_utility_new_xml_operate(vexo_user_id, const char*) {
    return nullptr;
}

void vexo_utility_delete_xml_operate(vexo_xml_operate*, const char*, const char*) {}

// Factory items: read from the recorder's factory file, written into its model library.
#include "vexo_hostmgr_resource.h"
#include "vexo_hostmgr_resource_config.h"
#include "vexo_hostmgr_resource_document.h"

static const char FACTORY_FILE[] = HOSTMGR_CONFIG_DIR "/vexo_hostmgr_factory.dat";
static const char FACTORY_ELEMENT[] = "DeviceInfo";
static const char VALUE_ATTRIBUTE[] = "content";
static const char OLD_VALUE_ATTRIBUTE[] = "Uuid";

// ---- reading -------------------------------------------------------------------------------------------------------

/** Reads a text of the document into a cleared field; it is terminated whatever the document does. */
template <size_t Size, typename Read>
static bool ReadText(char (&text)[Size], Read read) {
    memset(text, 0, Size);
    const bool found = read(text, static_cast<unsigned int>(Size)) == 0;
    text[Size - 1] = '\0';
    return found;
}

template <size_t Size>
static bool ReadAttribute(vexo_xml_operate* document, const char* item, const char* attribute, char (&value)[Size]) {
    return ReadText(value, [=](char* text, unsigned int capacity) {
        return document->get_attribute(FACTORY_ELEMENT, item, attribute, text, capacity);
    });
}

/** An item that has its value in the old attribute only gets it in the new one, too, and the file is saved. */
template <size_t Size>
static bool ReadValue(vexo_xml_operate* document, const char* item, char (&value)[Size]) {
    if (ReadAttribute(document, item, VALUE_ATTRIBUTE, value))
        return true;
    if (!ReadAttribute(document, item, OLD_VALUE_ATTRIBUTE, value))
        return false;
    document->set_attribute(FACTORY_ELEMENT, item, VALUE_ATTRIBUTE, value);
    document->save_content(FACTORY_FILE);
    return true;
}

static bool ReadItem(const HostMgrSite& site, vexo_xml_operate* document, unsigned int child,
                     _tagVexoHostMgrFactoryInfo* item) {
    char name[128];
    char value[256];
    if (!ReadText(name, [=](char* text, unsigned int capacity) {
            return document->get_child_name(FACTORY_ELEMENT, child, text, capacity);
        }))
        return false;
    HostMgrPrintf(HOSTMGR_LEVEL_DEBUG, site, "name %s\n", name);
    if (!ReadValue(document, name, value))
        return false;
    HostMgrPrintf(HOSTMGR_LEVEL_DEBUG, site, "value %s\n", value);
    HostMgrCopyText(item->sName, name);
    HostMgrCopyText(item->sValue, value);
    return true;
}

// The room bounds the children that are looked at, not the items found: a child without a value costs its place.
int vexo_hostmgr_get_factory_info(const HostMgrConfigCall& call) {
    const unsigned int room = call.dwSize / sizeof(_tagVexoHostMgrFactoryInfo);
    if (room == 0)
        return -1;
    const unsigned int bytes = room * static_cast<unsigned int>(sizeof(_tagVexoHostMgrFactoryInfo));
    memset(call.pBuffer, 0, bytes);
    call.SetReturned(bytes);
    if (!HostMgrIsFile(FACTORY_FILE)) {
        HOSTMGR_PRINTF(ERROR, "%s not exist!!\n", FACTORY_FILE);
        return -1;
    }
    const HostMgrDocument document("HostMgr_Dev_GetConfig", __func__);
    if (document.Get() == NULL) {
        HOSTMGR_PUTS(ERROR, "vexo_utility_new_xml_operate failed!!");
        return -1;
    }
    if (document->load_file(FACTORY_FILE) != 0) {
        HOSTMGR_PRINTF(ERROR, "load_file %s failed!!\n", FACTORY_FILE);
        return -1;
    }
    unsigned int filled = 0;
    for (unsigned int child = 0; child < room; ++child) {
        HostMgrRecordAt<_tagVexoHostMgrFactoryInfo> item(call.pBuffer + filled * sizeof(_tagVexoHostMgrFactoryInfo));
        if (ReadItem(HOSTMGR_HERE, document.Get(), child, item.Get()))
            ++filled;
    }
    return filled > 0 ? 0 : -1;
}

// ---- writing -------------------------------------------------------------------------------------------------------

/** The recorder's item of a name; where it has none, its last item, or an empty one: the rest of it is carried over. */
static void FindItem(const char* name, vexo_hostlib_factory_info* found) {
    memset(found, 0, sizeof(*found));
    unsigned int count = 0;
    if (vexo_model_get_host_manage_factory_info_num(&count) != 0)
        return;
    for (unsigned int index = 0; index < count; ++index) {
        vexo_hostlib_factory_info item = *found;
        if (vexo_model_get_host_manager_factory_info(index, &item) != 0)
            continue;
        *found = item;
        if (strncmp(item.name, name, sizeof(item.name)) == 0)
            return;
    }
}

static int WriteItem(const _tagVexoHostMgrFactoryInfo& entry) {
    char name[sizeof(entry.sName)];
    HostMgrCopyText(name, entry.sName);
    vexo_hostlib_factory_info item;
    FindItem(name, &item);
    HostMgrCopyText(item.name, name);
    HostMgrCopyText(item.value, entry.sValue);
    return vexo_model_set_host_manager_factory_info_force(item);
}

static int vexo_hostmgr_set_factory_info(const void* lpInBuffer, unsigned int dwInBufferSize) {
    constexpr unsigned int ENTRY_SIZE = sizeof(_tagVexoHostMgrFactoryInfo);
    if (lpInBuffer == NULL || dwInBufferSize < ENTRY_SIZE) {
        HOSTMGR_PRINTF(ERROR, "lpInBuffer:%p, dwInBufferSize %d < %d", lpInBuffer, dwInBufferSize, ENTRY_SIZE);
        return -1;
    }
    const _tagVexoHostMgrFactoryInfo* entries = static_cast<const _tagVexoHostMgrFactoryInfo*>(lpInBuffer);
    for (unsigned int index = 0; index < dwInBufferSize / ENTRY_SIZE; ++index) {
        if (entries[index].sName[0] == '\0')
            continue;
        if (WriteItem(entries[index]) != 0) {
            HOSTMGR_PUTS(WARNING, "vexo_model_set_host_manager_factory_info_force failed!!");
            return -1;
        }
    }
    return 0;
}

int vexo_hostmgr_res_manage::HostMgr_Dev_SetConfig(int hLogin, unsigned int dwCommand, int /*lStartChan*/,
                                                   int /*lChanNum*/, void* /*lpCondBuffer*/,
                                                   unsigned int /*dwCondBufferSize*/, void* lpInBuffer,
                                                   unsigned int dwInBufferSize) {
    if (hLogin <= 0) {
        HOSTMGR_PUTS(ERROR, "hLogin invaild!!");
        return -1;
    }
    HostMgrUserInfo* user = NULL;
    if (HostMgrGetUserInfo(hLogin, &user) != 0)
        return -1;
    if (dwCommand != HOSTMGR_SETCONFIG_FACTORY) {
        HOSTMGR_PRINTF(ERROR, "Recovery cmd = %d\n", dwCommand);
        return -1;
    }
    return vexo_hostmgr_set_factory_info(lpInBuffer, dwInBufferSize);
}

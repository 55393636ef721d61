#include "vexo_hostmgr_resource_document.h"

#include <stdlib.h>
#include <unistd.h>

#include "vexo_hostmgr_resource.h"

bool HostMgrIsFile(const char* path) {
    return access(path, F_OK) == 0;
}

HostMgrDocument::~HostMgrDocument() {
    if (m_document != NULL)
        vexo_utility_delete_xml_operate(m_document, "vexo_hostmgr_resource.cpp", m_function);
}

// ---- the agent's documents -----------------------------------------------------------------------------------------

namespace {

/** The path of an agent's document. Nothing of a name is cut: one that is too long is the file system's to refuse. */
class DocumentPath {
public:
    explicit DocumentPath(const char* name)
        : m_size(sizeof(HOSTMGR_CONFIG_DIR "/hostmgr_.xml") + strlen(name)),
          m_path(static_cast<char*>(malloc(m_size))) {
        if (m_path != NULL)
            snprintf(m_path, m_size, "%s/hostmgr_%s.xml", HOSTMGR_CONFIG_DIR, name);
    }
    ~DocumentPath() { free(m_path); }
    DocumentPath(const DocumentPath&) = delete;
    DocumentPath& operator=(const DocumentPath&) = delete;

    /** Null when there is no memory for it. */
    const char* Get() const { return m_path; }
    size_t Size() const { return m_size; }

private:
    const size_t m_size;
    char* const m_path;
};

}  // namespace

static int NoMemory(const HostMgrSite& site, size_t size) {
    HostMgrPrintf(HOSTMGR_LEVEL_ERROR, site, "vexo_utility_malloc failed, size %d!!\n", static_cast<int>(size));
    return -1;
}

// The document bears the reader's label, and a file that cannot be written is no failure: agents live with both.
int vexo_hostmgr_res_manage::HostMgr_Dev_SaveCfg(char* pHostMgrName, char* pXml, unsigned int dwXmlSize) {
    if (pHostMgrName == NULL || pXml == NULL || dwXmlSize == 0) {
        HOSTMGR_PRINTF(ERROR, "pHostMgrName %p, pXml %p, dwXmlSize %d!!\n", static_cast<void*>(pHostMgrName),
                       static_cast<void*>(pXml), dwXmlSize);
        return -1;
    }
    const DocumentPath path(pHostMgrName);
    if (path.Get() == NULL)
        return NoMemory(HOSTMGR_HERE, path.Size());
    const HostMgrDocument document("HostMgr_Dev_ReadCfg", __func__);
    if (document.Get() == NULL) {
        HOSTMGR_PUTS(ERROR, "vexo_utility_new_xml_operate failed!!");
        return -1;
    }
    if (document->load_content(pXml) != 0) {
        HOSTMGR_PRINTF(ERROR, "\nload pXml %s , dwXmlSize %d failed!!\n", pXml, dwXmlSize);
        return -1;
    }
    if (document->save_content(path.Get()) != 0)
        HOSTMGR_PRINTF(ERROR, "save_content to %s failed!!\n", path.Get());
    return 0;
}

/** A document as a text of its own, for free(); null when its size cannot be told or there is no memory. */
static char* ExportDocument(const HostMgrSite& site, vexo_xml_operate* document) {
    constexpr size_t SMALLEST = 1024;
    const unsigned int size = document->get_content_size();
    if (size == VEXO_XML_NO_SIZE) {
        HostMgrPuts(HOSTMGR_LEVEL_ERROR, site, "get_content_size failed!!");
        return NULL;
    }
    const size_t needed = size_t{size} + 1;
    const size_t capacity = needed > SMALLEST ? needed : SMALLEST;
    char* text = static_cast<char*>(malloc(capacity));
    if (text == NULL) {
        NoMemory(site, capacity);
        return NULL;
    }
    memset(text, 0, capacity);
    unsigned int exported = 0;
    if (document->export_content(text, static_cast<unsigned int>(capacity), &exported) != 0)
        HostMgrPrintf(HOSTMGR_LEVEL_ERROR, site, "export_content to str failed!!, export_size %d\n", exported);
    text[capacity - 1] = '\0';  // whatever the recorder wrote, it is a text
    return text;
}

char* vexo_hostmgr_res_manage::HostMgr_Dev_ReadCfg(char* pHostMgrName) {
    if (pHostMgrName == NULL) {
        HOSTMGR_PUTS(ERROR, "NULL == pHostMgrName!!");
        return NULL;
    }
    const DocumentPath path(pHostMgrName);
    if (path.Get() == NULL) {
        NoMemory(HOSTMGR_HERE, path.Size());
        return NULL;
    }
    if (!HostMgrIsFile(path.Get())) {
        HOSTMGR_PRINTF(ERROR, "%s not exist!!\n", path.Get());
        return NULL;
    }
    const HostMgrDocument document(__func__, __func__);
    if (document.Get() == NULL) {
        HOSTMGR_PUTS(ERROR, "vexo_utility_new_xml_operate failed!!");
        return NULL;
    }
    if (document->load_file(path.Get()) != 0)
        return NULL;
    return ExportDocument(HOSTMGR_HERE, document.Get());
}

// XML documents of the recorder for a scope, and paths of any length under the configuration directory. What a document
// holds does not belong here.
#ifndef VEXO_HOSTMGR_RESOURCE_DOCUMENT_H
#define VEXO_HOSTMGR_RESOURCE_DOCUMENT_H

#include "hostmgr_common.h"

/** The shipped directory. Paths are built as "%s/...", so they have two slashes; agents' scripts know them so. */
#define HOSTMGR_CONFIG_DIR "/config/"

/** Whether a file exists, readable or not. */
bool HostMgrIsFile(const char* path);

/** An XML document while it is in use. */
class HostMgrDocument {
public:
    /** label: for the recorder's accounting; function: who gives the document back. Both have static storage. */
    HostMgrDocument(const char* label, const char* function)
        : m_document(vexo_utility_new_xml_operate(VEXO_USER_HOSTMGR, label)), m_function(function) {}
    ~HostMgrDocument();
    HostMgrDocument(const HostMgrDocument&) = delete;
    HostMgrDocument& operator=(const HostMgrDocument&) = delete;

    /** Null when the recorder made none. */
    vexo_xml_operate* Get() const { return m_document; }
    vexo_xml_operate* operator->() const { return m_document; }

private:
    vexo_xml_operate* const m_document;
    const char* const m_function;
};

#endif

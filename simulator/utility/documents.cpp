// The platform's XML documents: vexo_utility_new_xml_operate and what it hands out. What a document is stands in
// core/document.h.
#include <cstdio>
#include <cstring>
#include <new>

#include "core/document.h"
#include "core/faults.h"
#include "core/guest_files.h"
#include "core/watch.h"
#include "utility/caller.h"
#include "vexo_utility.h"

namespace {

using simulator::HostPath;
using simulator::ShallFail;

int Answer(bool done) {
    return done ? 0 : -1;
}

/** Cut to the capacity and terminated. */
int Put(const char* text, char* buffer, unsigned capacity) {
    snprintf(buffer, capacity, "%s", text);
    return 0;
}

class GuestDocument final : public vexo_xml_operate {
public:
    int load_file(const char* path) override {
        m_document.Clear();
        return Answer(!ShallFail("vexo_xml_operate::load_file") && path != nullptr && m_document.Load(HostPath(path)));
    }

    int load_content(const char* text) override {
        m_document.Clear();
        return Answer(!ShallFail("vexo_xml_operate::load_content") && text != nullptr &&
                      m_document.Parse(text, strlen(text)));
    }

    int save_content(const char* path) override {
        return Answer(!ShallFail("vexo_xml_operate::save_content") && path != nullptr &&
                      m_document.Save(HostPath(path)));
    }

    int export_content(char* buffer, unsigned int capacity, unsigned int* exported) override {
        if (ShallFail("vexo_xml_operate::export_content") || buffer == nullptr || exported == nullptr) {
            return -1;
        }
        const std::string text = m_document.Text();
        if (text.size() >= capacity) {
            return -1;
        }
        memcpy(buffer, text.c_str(), text.size() + 1);
        *exported = static_cast<unsigned>(text.size());
        return 0;
    }

    unsigned int get_content_size() override {
        return ShallFail("vexo_xml_operate::get_content_size") ? VEXO_XML_NO_SIZE
                                                               : static_cast<unsigned>(m_document.Text().size());
    }

    int get_attribute(const char* element, const char* child, const char* attribute, char* value,
                      unsigned int capacity) override {
        if (ShallFail("vexo_xml_operate::get_attribute") || attribute == nullptr || value == nullptr || capacity == 0) {
            return -1;
        }
        const pugi::xml_attribute found = ChildOf(element, child).attribute(attribute);
        return found.empty() ? -1 : Put(found.value(), value, capacity);
    }

    int set_attribute(const char* element, const char* child, const char* attribute, const char* value) override {
        if (ShallFail("vexo_xml_operate::set_attribute") || attribute == nullptr || *attribute == '\0' ||
            value == nullptr) {
            return -1;
        }
        pugi::xml_node node = ChildOf(element, child);
        pugi::xml_attribute found = node.attribute(attribute);
        if (found.empty()) {
            found = node.append_attribute(attribute);
        }
        return Answer(found.set_value(value));
    }

    int get_child_name(const char* element, unsigned int index, char* name, unsigned int capacity) override {
        if (ShallFail("vexo_xml_operate::get_child_name") || element == nullptr || name == nullptr || capacity == 0) {
            return -1;
        }
        for (const pugi::xml_node& child : m_document.Find(element).children()) {
            if (child.type() == pugi::node_element && index-- == 0) {
                return Put(child.name(), name, capacity);
            }
        }
        return -1;
    }

private:
    pugi::xml_node ChildOf(const char* element, const char* child) const {
        return element != nullptr && child != nullptr ? m_document.Find(element).child(child) : pugi::xml_node();
    }

    simulator::Document m_document;
};

std::string LabelOf(vexo_user_id owner, const char* label) {
    return std::string(label != nullptr ? label : "-") + ", user " + std::to_string(owner);
}

}  // namespace

vexo_xml_operate* vexo_utility_new_xml_operate(vexo_user_id owner, const char* label) {
    if (ShallFail("vexo_utility_new_xml_operate")) {
        return nullptr;
    }
    auto* document = new (std::nothrow) GuestDocument;
    if (document != nullptr) {
        simulator::Take(simulator::Goods::Document, reinterpret_cast<unsigned long>(document), LabelOf(owner, label));
    }
    return document;
}

void vexo_utility_delete_xml_operate(vexo_xml_operate* document, const char* file, const char* label) {
    if (document != nullptr &&
        simulator::GiveBack(simulator::Goods::Document, reinterpret_cast<unsigned long>(document),
                            simulator::Place(file, label))) {
        delete static_cast<GuestDocument*>(document);
    }
}

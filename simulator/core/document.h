// An XML document, on pugixml. What the guest does with documents, its booking and its faults stand in ../utility.
#ifndef SIMULATOR_CORE_DOCUMENT_H
#define SIMULATOR_CORE_DOCUMENT_H

#include <pugixml.hpp>
#include <string>

namespace simulator {

/** Keeps every byte between the marks, so that a document comes out as it went in. For one thread at a time. */
class Document {
public:
    /** Replaces the document by that text; false, with an empty document, when it is not one whole document. */
    bool Parse(const char* text, size_t length);
    /** As Parse, with what stands in a file. */
    bool Load(const std::string& path);
    void Clear() { m_document.reset(); }

    bool IsEmpty() const { return m_document.first_child().empty(); }
    std::string Text() const;

    /** Writes the text to a file, whole or not at all; false when that fails or the document is empty. */
    bool Save(const std::string& path) const;

    /** The first element of that name, in the order of the text, wherever it stands. */
    pugi::xml_node Find(const char* element) const;

private:
    bool IsWhole() const;

    pugi::xml_document m_document;
};

}  // namespace simulator

#endif

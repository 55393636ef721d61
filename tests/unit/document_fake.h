// XML documents of the recorder as the tests have them: on real files in a directory of the test's own, each call
// recorded, each call able to fail. Elements and attributes only, no text between them. Expectations stand in the
// tests.
#ifndef DOCUMENT_FAKE_H
#define DOCUMENT_FAKE_H

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "config_fixture.h"

/** An XML element. */
struct FakeElement {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<FakeElement> children;

    std::string Text() const {
        std::string text = "<" + name;
        for (const auto& [key, value] : attributes)
            text += " " + key + "=\"" + value + "\"";
        if (children.empty())
            return text + "/>";
        text += ">";
        for (const FakeElement& child : children)
            text += child.Text();
        return text + "</" + name + ">";
    }
    std::string* Attribute(const std::string& key) {
        for (auto& [name_, value] : attributes) {
            if (name_ == key)
                return &value;
        }
        return nullptr;
    }
    /** The first of that name, itself and those below. */
    FakeElement* Find(const std::string& wanted) {
        if (name == wanted)
            return this;
        for (FakeElement& child : children) {
            if (FakeElement* found = child.Find(wanted))
                return found;
        }
        return nullptr;
    }
};

/** Reads elements out of a text; what is left when it stops is not XML. */
class FakeParser {
public:
    explicit FakeParser(const std::string& text) : m_text(text) {}

    bool Document(FakeElement* root) { return Element(root) && (SkipBlanks(), m_at == m_text.size()); }

private:
    void SkipBlanks() {
        while (m_at < m_text.size() && isspace(static_cast<unsigned char>(m_text[m_at])))
            ++m_at;
    }
    bool Take(const std::string& token) {
        SkipBlanks();
        if (m_text.compare(m_at, token.size(), token) != 0)
            return false;
        m_at += token.size();
        return true;
    }
    std::string Until(const char* ends) {
        const size_t end = std::min(m_text.find_first_of(ends, m_at), m_text.size());
        const size_t begin = std::exchange(m_at, end);
        return m_text.substr(begin, end - begin);
    }
    bool Element(FakeElement* element) {
        if (!Take("<"))
            return false;
        element->name = Until(" />");
        if (element->name.empty() || !Attributes(element))
            return false;
        if (Take("/>"))
            return true;
        return Take(">") && Children(element) && Take("</" + element->name + ">");
    }
    bool Attributes(FakeElement* element) {
        for (SkipBlanks(); m_at < m_text.size() && m_text[m_at] != '/' && m_text[m_at] != '>'; SkipBlanks()) {
            const std::string key = Until("= />");
            if (!Take("=\""))
                return false;
            element->attributes.emplace_back(key, Until("\""));
            if (!Take("\""))
                return false;
        }
        return true;
    }
    bool Children(FakeElement* element) {
        while (SkipBlanks(), m_text.compare(m_at, 2, "</") != 0) {
            FakeElement child;
            if (!Element(&child))
                return false;
            element->children.push_back(child);
        }
        return true;
    }

    const std::string& m_text;
    size_t m_at = 0;
};

/** How documents behave from now on; operations by the names below. */
struct FakeDocumentSettings {
    std::set<std::string> fails;      // they answer -1
    std::set<std::string> scribbles;  // they fill their whole buffer with letters, unterminated
    unsigned int size = 0;            // get_content_size answers this; 0: the truth
};

/** A document; its calls are recorded as "operation(inputs)". */
class FakeDocument final : public vexo_xml_operate {
public:
    FakeDocument(PlatformMock& platform, const FakeDocumentSettings& settings)
        : m_platform(platform), m_settings(settings) {}

    int load_file(const char* path) override {
        m_root = {};
        if (Record("load_file", path) != 0)
            return -1;
        if (!std::filesystem::is_regular_file(FilePath(path)))
            return -1;
        std::ifstream file(FilePath(path));
        return Parse({std::istreambuf_iterator<char>(file), {}});
    }
    int load_content(const char* text) override {
        m_root = {};
        return Record("load_content", "...") != 0 ? -1 : Parse(text);
    }
    int save_content(const char* path) override {
        if (Record("save_content", path) != 0)
            return -1;
        std::ofstream file(FilePath(path));
        file << m_root.Text() << std::flush;
        return file.good() ? 0 : -1;
    }
    int export_content(char* buffer, unsigned int capacity, unsigned int* exported) override {
        const int result = Record("export_content", std::to_string(capacity));
        EXPECT_EQ(*exported, 0U);
        EXPECT_TRUE(std::all_of(buffer, buffer + std::min(capacity, 4096U), [](char c) { return c == 0; }));
        return Give("export_content", result, m_root.Text(), buffer, capacity, exported);
    }
    unsigned int get_content_size() override {
        if (Record("get_content_size", "") != 0)
            return VEXO_XML_NO_SIZE;
        return m_settings.size != 0 ? m_settings.size : static_cast<unsigned int>(m_root.Text().size());
    }
    int get_attribute(const char* element, const char* child, const char* attribute, char* value,
                      unsigned int capacity) override {
        const int result = Record("get_attribute", Listed({element, child, attribute, std::to_string(capacity)}));
        EXPECT_TRUE(std::all_of(value, value + capacity, [](char c) { return c == 0; }));
        FakeElement* found = Child(element, child);
        const std::string* text = found != nullptr ? found->Attribute(attribute) : nullptr;
        return Give("get_attribute", text != nullptr ? result : -1, text != nullptr ? *text : "", value, capacity);
    }
    int set_attribute(const char* element, const char* child, const char* attribute, const char* value) override {
        const int result = Record("set_attribute", Listed({element, child, attribute, value}));
        FakeElement* found = Child(element, child);
        if (result != 0 || found == nullptr)
            return -1;
        if (std::string* text = found->Attribute(attribute))
            *text = value;
        else
            found->attributes.emplace_back(attribute, value);
        return 0;
    }
    int get_child_name(const char* element, unsigned int index, char* name, unsigned int capacity) override {
        const int result = Record("get_child_name", Listed({element, std::to_string(index), std::to_string(capacity)}));
        EXPECT_TRUE(std::all_of(name, name + capacity, [](char c) { return c == 0; }));
        const FakeElement* found = m_root.Find(element);
        const bool there = found != nullptr && index < found->children.size();
        return Give("get_child_name", there ? result : -1, there ? found->children[index].name : "", name, capacity);
    }

private:
    /** Writes the call down; -1 when it is to fail. */
    int Record(const std::string& operation, const std::string& inputs) {
        m_platform.Record(operation + "(" + inputs + ")");
        return m_settings.fails.count(operation) != 0 ? -1 : 0;
    }
    static std::string Listed(const Lines& inputs) {
        std::string list;
        for (const std::string& input : inputs)
            list += (list.empty() ? "" : ", ") + input;
        return list;
    }
    int Parse(const std::string& text) {
        if (FakeParser(text).Document(&m_root))
            return 0;
        m_root = {};
        return -1;
    }
    FakeElement* Child(const char* element, const char* name) {
        FakeElement* parent = m_root.Find(element);
        if (parent == nullptr)
            return nullptr;
        for (FakeElement& child : parent->children) {
            if (child.name == name)
                return &child;
        }
        return nullptr;
    }
    /** A text goes out, cut and terminated, or rubbish in its place. */
    int Give(const std::string& operation, int result, const std::string& text, char* buffer, unsigned int capacity,
             unsigned int* length = nullptr) {
        if (m_settings.scribbles.count(operation) != 0)
            memset(buffer, 'x', capacity);
        else if (result == 0)
            snprintf(buffer, capacity, "%s", text.c_str());
        if (length != nullptr && result == 0)
            *length = static_cast<unsigned int>(text.size());
        return result;
    }

    PlatformMock& m_platform;
    const FakeDocumentSettings& m_settings;
    FakeElement m_root;
};

/** A test whose recorder keeps documents in a private directory; none may be left behind in use. */
class DocumentFixture : public ConfigFixture {
protected:
    void SetUp() override {
        ConfigFixture::SetUp();
        char directory[] = "/tmp/hostmgr_config_XXXXXX";
        ASSERT_NE(mkdtemp(directory), nullptr);
        m_directory = directory;
        SetConfigDirectory(m_directory);
        ON_CALL(platform, vexo_utility_new_xml_operate).WillByDefault([this](vexo_user_id, const char*) {
            ++m_in_use;
            return new FakeDocument(platform, documents);
        });
        ON_CALL(platform, vexo_utility_delete_xml_operate)
            .WillByDefault([this](vexo_xml_operate* document, const char*, const char*) {
                --m_in_use;
                delete static_cast<FakeDocument*>(document);
            });
    }
    void TearDown() override {
        EXPECT_EQ(m_in_use, 0);
        SetConfigDirectory("");
        std::filesystem::remove_all(m_directory);
    }

    /** A file of the directory, as path, written and read. */
    std::string PathOf(const std::string& name) const { return m_directory + "/" + name; }
    void Write(const std::string& name, const std::string& text) const { std::ofstream(PathOf(name)) << text; }
    std::string ReadBack(const std::string& name) const {
        std::ifstream file(PathOf(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /** Makes the recorder unable to make documents. */
    void FailNewDocument() { ON_CALL(platform, vexo_utility_new_xml_operate).WillByDefault(testing::Return(nullptr)); }

    FakeDocumentSettings documents;
    std::string m_directory;

private:
    int m_in_use = 0;
};

#endif

// doc: keeps an XML document of the agent's on the recorder, and reads it back.
#include <hostmgr_dev.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "console.h"
#include "input_file.h"
#include "output_file.h"
#include "safe_text.h"
#include "topic.h"

namespace hostmgrctl {
namespace {

using nlohmann::ordered_json;

// What the library logs of a save that it reports as done.
constexpr const char* NOT_WRITTEN = "save_content to ";

struct Options {
    std::string name;
    std::string file;
    std::string output;
    bool json = false;
};

void CheckName(const std::string& name) {
    if (name.empty() || name.find('/') != std::string::npos) {
        throw Failure(ExitCode::Usage, "\"" + PrintableText(name) + "\" is no name of a document: it becomes part of " +
                                           "a file's name, so it must not be empty, nor hold a \"/\"");
    }
}

/** The text of a document, which must be one that the library takes whole: it reads up to a zero byte. */
std::string ReadDocument(const std::string& file) {
    const bool standard = file.empty() || file == "-";
    const std::string what = standard ? "standard input" : file;
    const auto text = standard ? ReadStream(stdin) : ReadFile(file);
    if (!text) {
        throw Failure(ExitCode::Usage, "cannot read " + what + ": " + strerror(errno));
    }
    if (text->empty()) {
        throw Failure(ExitCode::Usage, what + " is empty: an XML document has a root element at least");
    }
    const size_t zero = text->find('\0');
    if (zero != std::string::npos) {
        throw Failure(ExitCode::Usage, what + " has a zero byte at " + std::to_string(zero) +
                                           ": it is no XML, or UTF-16, which is not possible; write it as UTF-8");
    }
    return *text;
}

struct Free {
    void operator()(char* text) const { free(text); }
};

/** The document as the recorder has it, or null. */
std::unique_ptr<char, Free> ReadBack(std::string name) {
    return std::unique_ptr<char, Free>(vexo_soft::vexo_HostMgr_Dev_ReadCfg(name.data()));
}

void CheckKept(const std::string& name) {
    const bool lost = console::LastError().find(NOT_WRITTEN) != std::string::npos;
    if (lost || ReadBack(name) == nullptr) {
        throw Failure(ExitCode::Refused, "the recorder could not write document " + PrintableText(name) +
                                             ": is its configuration folder full or read-only, or the name too long?");
    }
}

void PrintDone(const Options& options, size_t bytes, const std::string& text) {
    if (!options.json) {
        fprintf(console::Data(), "document %s: %zu byte%s%s\n", PrintableText(options.name).c_str(), bytes,
                bytes == 1 ? "" : "s", text.c_str());
        return;
    }
    ordered_json json = {{"name", ValidText(options.name)}, {"bytes", bytes}};
    if (!options.output.empty()) {
        json["file"] = ValidText(options.output);
    }
    fprintf(console::Data(), "%s\n", json.dump(2).c_str());
}

ExitCode RunSave(const Options& options) {
    CheckName(options.name);
    std::string text = ReadDocument(options.file);
    std::string name = options.name;
    vexo_soft::vexo_HostMgr_Dev_init();
    if (vexo_soft::vexo_HostMgr_Dev_SaveCfg(name.data(), text.data(), static_cast<unsigned>(text.size())) != 0) {
        throw Failure(ExitCode::Refused, "the recorder refused document " + PrintableText(name) + " (" +
                                             std::to_string(text.size()) +
                                             " bytes): it must be well-formed XML with one root element; one "
                                             "that was saved under that name before is still there");
    }
    CheckKept(name);
    PrintDone(options, text.size(), " saved");
    return ExitCode::Ok;
}

/** Puts it to standard output byte for byte, or into JSON. */
void PutDocument(const Options& options, const std::string& text) {
    if (options.json) {
        const ordered_json json = {
            {"name", ValidText(options.name)}, {"bytes", text.size()}, {"text", ValidText(text)}};
        fprintf(console::Data(), "%s\n", json.dump(2).c_str());
    } else {
        fwrite(text.data(), 1, text.size(), console::Data());
    }
}

ExitCode RunRead(const Options& options) {
    CheckName(options.name);
    if (!options.output.empty()) {
        CheckWritable(options.output, WholePlace(options.output));
    }
    vexo_soft::vexo_HostMgr_Dev_init();
    const std::unique_ptr<char, Free> read = ReadBack(options.name);
    if (read == nullptr) {
        throw Failure(ExitCode::Refused, "the recorder has no document " + PrintableText(options.name) +
                                             ", or no XML in it: hostmgrctl doc save stores one");
    }
    const std::string text = read.get();
    if (text.empty()) {
        throw Failure(ExitCode::Refused, "document " + PrintableText(options.name) + " came out empty");
    }
    if (options.output.empty()) {
        PutDocument(options, text);
    } else {
        WriteWhole(options.output, text);
        PrintDone(options, text.size(), " written to " + options.output);
    }
    return ExitCode::Ok;
}

Action Add(CLI::App& app) {
    auto options = std::make_shared<Options>();
    CLI::App* save = app.add_subcommand("save", "store a document, in place of one of that name");
    save->add_option("name", options->name, "the document's name")->type_name("NAME")->required();
    save->add_option("file", options->file, "the XML; without it, or with \"-\": standard input")->type_name("FILE");
    CLI::App* read = app.add_subcommand("read", "print a document, byte for byte");
    read->add_option("name", options->name, "the document's name")->type_name("NAME")->required();
    read->add_option("-o,--output", options->output, "write it to this file, whole or not at all")->type_name("FILE");
    app.require_subcommand(1);
    for (CLI::App* command : {save, read}) {
        command->fallthrough();
        command->get_formatter()->column_width(28);
    }
    app.add_flag("--json", options->json, "print one JSON object");
    return [options, save] { return save->parsed() ? RunSave(*options) : RunRead(*options); };
}

}  // namespace

const Topic DOC_TOPIC = {
    "doc",
    "Keeps the agent's XML documents on the recorder.",
    "  init, SaveCfg (save), ReadCfg (read)\n",
    "  hostmgrctl doc save platform platform.xml   store it under the name platform\n"
    "  hostmgrctl doc read platform -o copy.xml    and get it back\n"
    "  make-config | hostmgrctl doc save platform\n"
    "  hostmgrctl doc read platform | xmllint --format -\n",
    Add,
};

}  // namespace hostmgrctl

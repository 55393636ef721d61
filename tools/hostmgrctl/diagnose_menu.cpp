#include "diagnose_menu.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "exit_code.h"

// The library is built without type information, which the undefined-behaviour sanitizer looks for at a virtual call.
#define WITHOUT_TYPE_CHECK __attribute__((no_sanitize("vptr")))

/** What answers the menu, as the recorder sees it: the answering operation is its first one. */
class vexo_diagnose_client {
public:
    virtual void diagnose(unsigned int command, int (*print)(const char* format, ...)) = 0;

protected:
    ~vexo_diagnose_client() = default;
};

int vexo_utility_regist_diag(vexo_diagnose_client* client, const char* title, const char* menu);

namespace hostmgrctl {
namespace {

constexpr const char* REGISTRATION = "_Z24vexo_utility_regist_diagP20vexo_diagnose_clientPKcS2_";

struct Registered {
    vexo_diagnose_client* client = nullptr;
    const char* title = "";
    const char* menu = "";
    bool refused = false;
};

Registered s_registered;  // written once, by the initialisation

std::string* s_answer = nullptr;  // where the print function, which carries no pointer of its own, collects

__attribute__((format(printf, 1, 2))) int Collect(const char* format, ...) {
    char* text = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length >= 0) {
        s_answer->append(text, static_cast<size_t>(length));
        free(text);
    }
    return length;
}

}  // namespace

DiagnosticsMenu TheDiagnosticsMenu() {
    if (s_registered.refused) {
        throw Failure(ExitCode::Refused, "the recorder did not take the library's diagnostics menu, so there is none");
    }
    if (s_registered.client == nullptr) {
        throw Failure(ExitCode::Refused,
                      "the library did not register a diagnostics menu where the tool could see it: is it one with "
                      "its platform linked in? Use the recorder's own console");
    }
    return {s_registered.title, s_registered.menu};
}

WITHOUT_TYPE_CHECK std::string AskDiagnostics(unsigned command) {
    std::string answer;
    s_answer = &answer;
    s_registered.client->diagnose(command, Collect);
    return answer;
}

}  // namespace hostmgrctl

/**
 * Stands before the recorder's own operation of this name: the loader looks into the program first. The recorder gets
 * the registration all the same, so its own console has the menu, too.
 */
int vexo_utility_regist_diag(vexo_diagnose_client* client, const char* title, const char* menu) {
    using Regist = int (*)(vexo_diagnose_client*, const char*, const char*);
    const auto regist = reinterpret_cast<Regist>(dlsym(RTLD_NEXT, hostmgrctl::REGISTRATION));
    const int result = regist != nullptr ? regist(client, title, menu) : -1;
    hostmgrctl::s_registered = {client, title, menu, result != 0};
    return result;
}

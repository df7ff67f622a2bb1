#pragma once

#include "platform/ErrorManager.h"
#include "platform/HwAbstractionLayer.h"
#include "platform/VQMUtility.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

/// What the core and the test modules called, in the order in which it happened, each call as one text:
///
///     debug     "text" of a line of level 3 and code 0, "[level code] text" of any other
///     trace     "text"
///     box       "caption | text | modal severity buttons reserved reserved"
///     alert     "caption | text" (the error-manager hook)
///     progress  "new <id> <title>", "<id>: <percent>", "removed <id>", "button <id> removed"
///     property  "<section>/<key> = <value>"
///     asked     "<section>/<key>, else <default>" of a text property
///     error     "<code> <text>" signalled, "destroy <id>", "destroy all"
///     option    "find <name>", "has <id>" (the hardware repository)
///     complete  "<parts>" of start-up complete
///     handover  "menu", "languages"
///     module    "<file> <operation> <arguments>"
struct FakeCalls
{
    struct Call
    {
        std::string service;
        std::string text;
    };
    std::vector<Call> all;
    /// Told of each call once it is recorded; what it throws leaves the service called.
    std::function<void(const Call &)> onCall;

    void add(const std::string &service, const std::string &text);
    /// The texts of the services named, in order.
    std::vector<std::string> of(std::initializer_list<const char *> services) const;
    std::vector<std::string> of(const char *service) const { return of({service}); }
    void clear() { all.clear(); }
};

/// What the services answer.
struct FakeAnswers
{
    int debugLevel = 3; ///< lines up to this level are wanted
    bool progressHandlerInstalled = true;
    std::map<std::string, QString> properties = {{"StartupProcess/ProgressBar", "1"}};
    int requiredMemoryMb = 0;
    int availableMemoryMb = 1000;
    bool guiEnabled = true;
    bool hookInstalled = true;
    bool tracing = false;                    ///< spans are traced; lines are recorded all the same
    std::map<std::string, int> knownOptions; ///< identifiers by name
    std::vector<int> installedOptions;       ///< identifiers
};

extern FakeCalls &calls; // never destroyed: libraries may log until the process ends
extern FakeAnswers answers;

/// What the readers handed over, in order; deleted by resetFakes().
struct FakeHandovers
{
    std::vector<std::map<QString, Orvia::SMenuTree *> *> menus;
    std::vector<std::map<QString, QString> *> languages;
};
extern FakeHandovers handovers;

/// A hardware repository made in C: answers `code` at position 6 and, when `hasUnit`, an object at 27. Logs
/// its calls as a module does: "repository position <n> ...", "unit position 1 <ready>".
extern "C" void *handMadeRepository(int code, int hasUnit);

/// Tables by registration id, every registration since the process began.
extern std::vector<std::pair<int, const Orvia::CErrorManager::SErrorDefinition *>> registeredErrors;

/// Forgets the calls, sets the answers back. What is registered once per process stays.
void resetFakes();

#include "Run.h"

#include "Base/GCException.h"
#include "Commands.h"
#include "EventText.h"
#include "ExitCode.h"
#include "JournalPage.h"
#include "Json.h"
#include "MinimalCorvo/CorvoBase.h"
#include "Pages.h"
#include "PlanPage.h"
#include "Report.h"
#include "Session.h"
#include "Text.h"
#include "Watch.h"
#include "commissioning/Selection.h"

#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <sys/resource.h>
#include <unistd.h>

namespace commandline {

namespace {

/// Each camera of a plan that is applied holds a descriptor, its lock. The soft limit is that low for select(), which
/// nothing here uses.
void allowManyDescriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit); // without it some cameras of a very long plan are not begun
}

/// Where the caller has closed a standard stream, the journal or a socket would get its number, and what is printed.
void openStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) < 0)
            (void)open("/dev/null", O_RDWR); // the lowest number that is free
    }
}

/// The library for the length of a scope.
class Library {
public:
    Library() {
        // As the window has it: many cameras answer at once, and a program that dies must not lock a camera for long.
        setenv("CORVO_BROADCAST_RECV_BUF_SIZE", "1000000", 0); // NOLINT(concurrency-mt-unsafe): nobody else reads yet
        setenv("CORVO_GIGE_HEARTBEAT", "12000", 0);            // NOLINT(concurrency-mt-unsafe)
        Corvo::CorvoInitialize();
    }
    ~Library() { Corvo::CorvoTerminate(true); }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
};

std::string page(const Arguments &arguments, const Outcome &outcome, const Session &session, const Terminal &terminal) {
    const auto &inventory = session.inventory();
    switch (arguments.command) {
    case Command::List:
        return listPage(inventory, terminal);
    case Command::Show:
        return outcome.error.empty()
                   ? showPage(*commissioning::camerasNamed(arguments.cameras.front(), inventory).front(), inventory,
                              terminal)
                   : "";
    case Command::Doctor:
        return doctorPage(inventory, terminal);
    case Command::PlanExport:
        return outcome.text;
    case Command::PlanCheck:
    case Command::PlanApply:
        return planPage(outcome, terminal);
    case Command::PlanUndo:
    case Command::Undo:
        return outcome.text.empty() && outcome.plan ? planPage(outcome, terminal) : outcome.text;
    case Command::PlanLog:
        return outcome.log ? logPage(*outcome.log, terminal) : ""; // none when it was interrupted
    default:
        return changesPage(outcome, inventory, terminal);
    }
}

Json json(const Outcome &outcome, const Session &session) {
    Json object = inventoryJson(session.inventory());
    for (const ChangeRecord &record : outcome.changes)
        object["changes"].push_back(changeJson(record));
    object["plan"] = planJson(outcome.plan);
    object["log"] = logJson(outcome.log);
    if (!outcome.error.empty())
        object["error"] = {{"code", outcome.exitCode}, {"text", outcome.error}};
    return object;
}

void report(const Arguments &arguments, const Outcome &outcome, const Session &session, const Terminal &terminal) {
    if (arguments.json) {
        terminal.print(printed(json(outcome, session)));
        return;
    }
    terminal.print(page(arguments, outcome, session, terminal));
    if (!outcome.error.empty() && (outcome.changes.empty() || outcome.plan)) // else it is the error of a change
        terminal.complain(outcome.error);
}

int fail(const Arguments &arguments, const Terminal &terminal, int exitCode, const std::string &text) {
    if (arguments.json && arguments.command == Command::Watch)
        terminal.print(eventLine(eventJson("search-failed", text))); // lines are promised
    else if (arguments.json)
        terminal.print(printed(errorJson(exitCode, text)));
    else
        terminal.complain(text);
    return exitCode;
}

int carryOut(const Arguments &arguments, const Terminal &terminal) {
    Interruption interruption(arguments.command == Command::Watch);
    const Library library;
    try {
        Session session(arguments, terminal, interruption);
        if (arguments.command == Command::Watch)
            return watch(arguments, session, terminal);
        if (arguments.command == Command::Report)
            return writeReport(arguments, session, terminal);
        if (arguments.command != Command::PlanLog)
            session.search();
        Outcome outcome = carryOut(arguments, session, terminal);
        if (interruption.isRequested())
            outcome = {ExitInterrupted, std::move(outcome.changes), "Interrupted.", std::move(outcome.plan), ""};
        report(arguments, outcome, session, terminal);
        const bool isLost = outcome.exitCode == ExitDone && outcome.changes.empty() && !std::cout;
        return isLost ? ExitFailed : outcome.exitCode;
    } catch (const commissioning::Cancelled &) {
        return fail(arguments, terminal, ExitInterrupted,
                    arguments.command == Command::Report ? "Interrupted. No report was written."
                                                         : "Interrupted. Nothing was changed.");
    } catch (const GenICam::GenericException &error) {
        return fail(arguments, terminal, ExitFailed, harmless(error.GetDescription()));
    } catch (const std::invalid_argument &error) {
        return fail(arguments, terminal, ExitUsage, error.what());
    } catch (const std::exception &error) {
        return fail(arguments, terminal, ExitFailed, harmless(error.what()));
    }
}

} // namespace

int run(int argc, const char *const *argv) {
    openStandardStreams();
    const Parsed parsed = parseArguments(argc, argv, std::cout, std::cerr);
    if (!parsed.arguments)
        return parsed.exitCode;
    allowManyDescriptors();
    return carryOut(*parsed.arguments, Terminal(*parsed.arguments));
}

} // namespace commandline

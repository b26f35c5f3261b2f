#include "Arguments.h"

#include "ExitCode.h"
#include "Json.h"
#include "commissioning/AddressRules.h"
#include "commissioning/Parsing.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <ostream>

using namespace commissioning;

namespace commandline {

namespace {

/// The command line's description, filled into arguments when it is parsed.
class Parser {
public:
    Parser() {
        m_App.set_version_flag("--version", "lanvanectl " LANVANE_VERSION);
        m_App.require_subcommand(1);
        m_App.footer(Examples);
        m_App.get_formatter()->column_width(34);
        addCommonOptions();
        addLooking();
        addChanging();
        addRescue();
        addUndo();
        addWatch();
        addReport();
        addPlan();
    }

    Arguments parse(int argc, const char *const *argv) {
        try {
            m_App.parse(argc, argv);
        } catch (const CLI::RequiredError &) {
            nameCommands(m_App.get_subcommands().empty() ? m_App : *m_App.get_subcommands().front());
            throw;
        }
        readAddresses();
        checkTogether();
        return m_Arguments;
    }

    int report(const CLI::Error &error, std::ostream &out, std::ostream &problems) const {
        return m_App.exit(error, out, problems);
    }

private:
    static inline const std::vector<std::string> ModeNames = {"static", "dhcp", "auto"}; // in the order of Mode
    static constexpr const char *Examples =
        R"(A CAMERA is a MAC address in any spelling, a serial number, an IP address or a user-defined name.

Examples:
  lanvanectl list
  lanvanectl doctor --adapter eth1
  lanvanectl set 02:5A:E3:01:00:01 static 192.168.10.20/24
  lanvanectl set left dhcp --dry-run
  lanvanectl force 025AE3010001 192.168.10.20/24
  lanvanectl rescue --all --yes --json
  lanvanectl plan check cameras.csv

Exit codes: 0 done, 1 failed, 2 wrong use, 3 camera not found or ambiguous, 4 refused, 5 sent but not confirmed,
6 some of several failed, 10 doctor found warnings or errors, 11 a dry run or plan check would change something, 130 interrupted.)";

    CLI::App *add(Command command, const char *name, const char *description, const char *example = "",
                  CLI::App *parent = nullptr) {
        CLI::App *app = (parent ? parent : &m_App)->add_subcommand(name, description);
        app->fallthrough(); // common options stand anywhere
        app->footer(std::string("The options of \"lanvanectl --help\" may follow as well.\n\nExample:\n  lanvanectl ") +
                    example);
        app->callback([this, command] { m_Arguments.command = command; });
        return app;
    }

    void addCommonOptions() {
        m_App
            .add_option("--adapter", m_Arguments.adapters, "Consider cameras behind this adapter only; may be repeated")
            ->type_name("IF")
            ->allow_extra_args(false);
        m_App.add_option("--ask", m_Ask, "Also ask a camera at this address, behind a router for instance; repeatable")
            ->type_name("ADDRESS")
            ->allow_extra_args(false)
            ->check(notEmpty());
        m_App.add_flag("--json", m_Arguments.json, "Print one JSON object");
        m_App.add_flag("--dry-run", m_Arguments.dryRun,
                       "Show what would change and send nothing that changes a camera");
        m_App.add_flag("--quiet", m_Arguments.quiet, "No progress and no notes");
        m_App.add_flag("--no-color", m_Arguments.noColor, "No colours, as with NO_COLOR in the environment");
        m_App.add_option("--timeout", m_Arguments.timeout_s, "Seconds that a camera may take to come back")
            ->type_name("S")
            ->check(secondsUpTo(3600))
            ->capture_default_str();
    }

    void addLooking() {
        add(Command::List, "list", "List all adapters and cameras", "list --adapter eth1");
        addCamera(add(Command::Show, "show", "Show everything known of one camera", "show 02:5A:E3:01:00:01"));
        add(Command::Doctor, "doctor", "Find out why cameras are missing or cannot be used", "doctor --json");
    }

    /// "nan" is in no range; CLI::Range lets it pass.
    static CLI::Validator secondsUpTo(int most) {
        const std::string range = "in [1 - " + std::to_string(most) + "]";
        return {[=](const std::string &text) {
                    double seconds = 0;
                    const char *const end = text.data() + text.size();
                    const bool isNumber = std::from_chars(text.data(), end, seconds).ptr == end;
                    return isNumber && seconds >= 1 && seconds <= most ? "" : "Value " + text + " not " + range;
                },
                range, "seconds"};
    }

    static CLI::Validator notEmpty() {
        return {[](const std::string &text) { return text.empty() ? "is empty" : ""; }, "", "text"};
    }

    void addCamera(CLI::App *app) { app->add_option("CAMERA", m_Camera, "The camera")->required(); }

    void addChanging() {
        CLI::App *set = add(Command::Set, "set", "Store how a camera gets its address, and restart it",
                            "set left static 192.168.10.20/24 --gateway 192.168.10.1");
        addCamera(set);
        set->add_option("MODE", m_Mode, "static, dhcp or auto")
            ->required()
            ->check(CLI::IsMember(ModeNames).description(""));
        addAddress(set, false);
        set->add_option("--mask", m_Mask, "Its subnet mask, where no /PREFIX is given")
            ->type_name("M")
            ->check(notEmpty());

        CLI::App *force = add(Command::Force, "force", "Give a camera a temporary address by its MAC",
                              "force 025AE3010001 192.168.10.20/24");
        addCamera(force);
        addAddress(force, true);

        addCamera(add(Command::Restart, "restart", "Make a camera obtain its address anew", "restart 192.168.10.20"));

        CLI::App *name = add(Command::Name, "name", "Store a camera's user-defined name", "name 192.168.10.20 left");
        addCamera(name);
        name->add_option("TEXT", m_Arguments.name, "At most 16 bytes; an empty text removes the name")
            ->required()
            ->check(CLI::Validator(
                [](const std::string &text) { return text.size() > 16 ? "longer than 16 bytes" : ""; }, "", "length"));
    }

    void addAddress(CLI::App *app, bool required) {
        app->add_option("ADDRESS", m_Address, "Address, with the subnet's prefix if you like: 192.168.10.20/24")
            ->required(required)
            ->type_name("ADDRESS[/PREFIX]")
            ->check(notEmpty());
        app->add_option("--gateway", m_Gateway, "Its default gateway")->type_name("G")->check(notEmpty());
    }

    void addRescue() {
        CLI::App *rescue =
            add(Command::Rescue, "rescue", "Make cameras usable: find a free address, store and verify it",
                "rescue --all --dry-run");
        CLI::Option *cameras = rescue->add_option("CAMERA", m_Arguments.cameras, "The cameras");
        rescue->add_flag("--all", m_Arguments.allCameras, "Every camera that cannot be used and that nobody holds")
            ->excludes(cameras);
        rescue->add_flag("--yes", m_Arguments.yes, "Do not ask");
        const std::vector<std::pair<const char *, Mode>> modes = {
            {"--static", Mode::Static}, {"--dhcp", Mode::Dhcp}, {"--auto", Mode::Auto}};
        CLI::Option_group *group = rescue->add_option_group("mode", "How they get their address from then on");
        for (const auto &mode : modes)
            group->add_flag_callback(mode.first, [this, value = mode.second] { m_Arguments.mode = value; });
        group->require_option(0, 1);
        rescue->callback([this] {
            m_Arguments.command = Command::Rescue;
            if (m_Arguments.cameras.empty() && !m_Arguments.allCameras)
                throw CLI::ValidationError("rescue", "name the cameras, or --all");
        });
    }

    void addWatch() {
        CLI::App *watch = add(Command::Watch, "watch", "Search again and again and tell what has happened",
                              "watch --interval 10 --json");
        constexpr int Day_s = 86400;
        watch->add_option("--interval", m_Arguments.interval_s, "Seconds from the begin of a search to the next")
            ->type_name("S")
            ->check(secondsUpTo(Day_s))
            ->capture_default_str();
        watch->add_option("--plan", m_Arguments.plan, "Tell which cameras differ from this plan")
            ->type_name("FILE")
            ->check(notEmpty());
        watch->add_option("--metrics", m_Arguments.metrics, "Write metrics for Prometheus into this file")
            ->type_name("FILE")
            ->check(notEmpty());
    }

    void addReport() {
        CLI::App *report = add(Command::Report, "report", "Gather in a zip file what helps to find a fault",
                               "report --redact report.zip");
        report->add_option("FILE", m_Arguments.file, "A file that is not there yet; else one is named by host and time")
            ->check(notEmpty());
        report->add_flag("--redact", m_Arguments.redact,
                         "Replace MACs, serial numbers, names and addresses; leave out what cannot be replaced in");
    }

    void addPlan() {
        CLI::App *plan = m_App.add_subcommand("plan", "Set up many cameras from a file");
        plan->fallthrough();
        plan->require_subcommand(1);

        CLI::App *save =
            add(Command::PlanExport, "export", "Write what there is now as a plan", "plan export cameras.csv", plan);
        save->add_option("FILE", m_Arguments.file, "CSV; standard output by default");
        save->add_flag("--force", m_Arguments.replacesFile, "Replace a file that is there");

        CLI::App *check = add(Command::PlanCheck, "check", "Say what a plan would change and what is wrong with it",
                              "plan check cameras.csv", plan);
        addPlanFile(check);

        CLI::App *apply = add(Command::PlanApply, "apply", "Do what a plan says", "plan apply cameras.csv", plan);
        addPlanFile(apply);
        apply->add_flag("--yes", m_Arguments.yes, "Do not ask");
        apply->add_option("--max-failures", m_Arguments.maxFailures, "So many failed cameras end it; 0: none does")
            ->type_name("N")
            ->capture_default_str();
        apply->add_flag_callback(
            "--no-rollback", [this] { m_Arguments.rollsBack = false; }, "Leave a camera that failed as it is");

        CLI::App *undo = add(Command::PlanUndo, "undo", "Take a plan, or a single change, back", "plan undo", plan);
        undo->add_option("ID", m_Arguments.undone, "As plan log lists it; the last plan when there is none")
            ->check(notEmpty());
        addUndoOptions(undo);
        add(Command::PlanLog, "log", "List all changes", "plan log", plan);
    }

    void addUndo() {
        CLI::App *undo = add(Command::Undo, "undo", "Take the last change of a camera back", "undo left");
        addCamera(undo);
        addUndoOptions(undo);
    }

    void addUndoOptions(CLI::App *app) {
        app->add_flag("--yes", m_Arguments.yes, "Do not ask");
        app->add_flag("--force", m_Arguments.isForced,
                      "Undo also what is no longer as the change left it, or can be restored in part only");
    }

    void addPlanFile(CLI::App *app) {
        app->add_option("FILE", m_Arguments.file, "CSV; - for standard input")->required()->check(notEmpty());
    }

    /// What is missing is a command; one that is not known counts as none.
    void nameCommands(const CLI::App &app) const {
        const auto commands = app.get_subcommands([](const CLI::App *each) { return !each->get_name().empty(); });
        if (commands.empty() || !app.get_subcommands().empty())
            return;
        const auto words = m_App.remaining(true);
        const auto word = std::find_if(words.begin(), words.end(), [](const auto &each) { return each[0] != '-'; });
        const bool isUnknown = word != words.end();
        std::string text = isUnknown ? "There is no command '" + *word + "'. There are" : "A subcommand is required";
        for (const CLI::App *command : commands)
            text += (command == commands.front() ? ": " : ", ") + command->get_name();
        throw CLI::RequiredError(text, CLI::ExitCodes::RequiredError);
    }

    template <typename Read>
    static std::optional<Address> addressOf(const char *what, const std::string &text, Read &&read) {
        const std::optional<Address> address = read(text);
        if (!address)
            throw CLI::ValidationError(what, "'" + text + "' is none");
        return address;
    }

    void readAddresses() {
        const std::size_t slash = m_Address.find('/');
        if (!m_Address.empty())
            m_Arguments.address = addressOf("ADDRESS", m_Address.substr(0, slash), addressFrom);
        if (!m_Mask.empty())
            m_Arguments.mask = addressOf("--mask", m_Mask, maskFrom);
        if (!m_Gateway.empty())
            m_Arguments.gateway = addressOf("--gateway", m_Gateway, addressFrom);
        if (slash != std::string::npos) {
            const auto prefix = addressOf("ADDRESS/PREFIX", m_Address.substr(slash), maskFrom);
            if (m_Arguments.mask && m_Arguments.mask != prefix)
                throw CLI::ValidationError("--mask", "is not the same as the prefix");
            m_Arguments.mask = prefix;
        }
        for (const std::string &text : m_Ask)
            m_Arguments.ask.push_back(*addressOf("--ask", text, addressFrom));
        if (m_Arguments.cameras.empty() && !m_Arguments.allCameras)
            m_Arguments.cameras = {m_Camera};
        if (!m_Mode.empty())
            m_Arguments.mode =
                static_cast<Mode>(std::find(ModeNames.begin(), ModeNames.end(), m_Mode) - ModeNames.begin());
    }

    void checkTogether() const {
        if (m_Arguments.command == Command::PlanExport && m_Arguments.json && m_Arguments.file.empty())
            throw CLI::ValidationError("plan export", "--json needs a FILE for the plan");
        if (m_Arguments.command != Command::Set)
            return;
        const bool isStatic = m_Arguments.mode == Mode::Static;
        if (isStatic && !m_Arguments.address)
            throw CLI::ValidationError("set", "static needs an address");
        if (!isStatic && (m_Arguments.address || m_Arguments.mask || m_Arguments.gateway))
            throw CLI::ValidationError("set", "only static takes addresses");
    }

    CLI::App m_App{"Finds GigE Vision cameras, says why one is missing, and sets how each gets its IP address.",
                   "lanvanectl"};
    Arguments m_Arguments;
    std::string m_Camera;
    std::string m_Mode;
    std::string m_Address;
    std::string m_Mask;
    std::string m_Gateway;
    std::vector<std::string> m_Ask;
};

bool wantsJson(int argc, const char *const *argv) {
    return std::any_of(argv, argv + argc, [](const char *word) { return std::strcmp(word, "--json") == 0; });
}

} // namespace

Parsed parseArguments(int argc, const char *const *argv, std::ostream &out, std::ostream &error) {
    Parser parser;
    try {
        return {parser.parse(argc, argv), ExitDone};
    } catch (const CLI::Success &success) { // help or version
        parser.report(success, out, error);
        return {std::nullopt, ExitDone};
    } catch (const CLI::Error &mistake) {
        if (wantsJson(argc, argv))
            out << printed(errorJson(ExitUsage, mistake.what()));
        else
            parser.report(mistake, out, error);
        return {std::nullopt, ExitUsage};
    }
}

} // namespace commandline

// wallslate-host: chooses what to do and turns every fault into one line and exit code 1.
#include "desktop/fault.h"
#include "desktop/headless.h"
#include "desktop/house_check.h"
#include "desktop/live_server.h"
#include "desktop/options.h"

#include <csignal>
#include <cstdio>

namespace {

using namespace desktop;

constexpr int SignalExitBase = 128; // as shells report a process that ended by a signal

void CatchSignals() {
    struct sigaction action = {};
    action.sa_handler = RequestStop;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

std::optional<Script> ScriptOf(const Options& options) {
    if (options.script.empty())
        return std::nullopt;
    Script script = ReadScript(options.script);
    if (script.TakesShots() && options.outFolder.empty())
        throw Fault(script.name + ": the script takes shots; --out DIR says where they go");
    return script;
}

DisplayOptions DisplayOf(const Options& options) {
    DisplayOptions display;
    display.program = options.display;
    display.stateFolder = options.stateFolder;
    display.userState = !options.Headless(); // a run for a picture must not change what the user has set
    display.logLevel = options.logLevel.value_or(display.logLevel);
    return display;
}

House HouseOf(const Options& options) {
    House house = ReadHouse(options.house);
    RequireReadable(house);
    return house;
}

void RunHeadlessWith(const Options& options) {
    HeadlessOptions run;
    run.script = ScriptOf(options);
    const House house = HouseOf(options);
    run.display = DisplayOf(options);
    run.shot = options.shot;
    run.outFolder = options.outFolder;
    run.quiet = options.quiet;
    run.report = options.shot == "-" ? stderr : stdout;
    RunHeadless(house, run);
}

void RunLiveWith(const Options& options) {
    LiveOptions run;
    run.script = ScriptOf(options);
    run.host.display = DisplayOf(options);
    run.host.quiet = options.quiet;
    run.host.printLog = run.script.has_value();
    run.listen = options.listen.value_or(run.listen);
    run.outFolder = options.outFolder;
    RunLive(HouseOf(options), run);
}

int CheckWith(const Options& options) {
    const House house = ReadHouse(options.house);
    const CheckResult result = CheckHouse(house);
    for (const Finding& finding : result.findings)
        std::printf("%s\n", FormatFinding(finding, house.folder).c_str());
    if (!options.quiet)
        std::printf("%s: %s\n", house.folder.c_str(), Summary(result).c_str());
    return result.Good() ? 0 : 1;
}

int Run(int count, char** arguments) {
    std::optional<Options> options = ParseOptions(count, arguments);
    if (!options)
        return 0;
    if (options->house.empty())
        options->house = DemoHouseFolder();
    if (options->check)
        return CheckWith(*options);
    if (options->display.empty())
        options->display = DefaultDisplayProgram();
    if (options->Headless())
        RunHeadlessWith(*options);
    else
        RunLiveWith(*options);
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    CatchSignals();
    try {
        return Run(count, arguments);
    } catch (const Interrupted& stop) {
        std::fprintf(stderr, "wallslate-host: %s\n", stop.what());
        return SignalExitBase + stop.signal;
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "wallslate-host: %s\n", fault.what());
        return 1;
    }
}

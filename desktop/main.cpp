// wallslate-host: chooses what to do and turns every fault into one line and exit code 1.
#include "desktop/fault.h"
#include "desktop/headless.h"
#include "desktop/house_check.h"
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

void RunHeadlessWith(const Options& options) {
    HeadlessOptions run;
    if (!options.script.empty())
        run.script = ReadScript(options.script);
    if (run.script && run.script->TakesShots() && options.outFolder.empty())
        throw Fault(run.script->name + ": the script takes shots; --out DIR says where they go");
    const House house = ReadHouse(options.house);
    RequireReadable(house);
    run.display.program = options.display;
    run.display.stateFolder = options.stateFolder;
    run.display.logLevel = options.logLevel.value_or(run.display.logLevel);
    run.shot = options.shot;
    run.outFolder = options.outFolder;
    run.quiet = options.quiet;
    run.report = options.shot == "-" ? stderr : stdout;
    RunHeadless(house, run);
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
    RunHeadlessWith(*options);
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

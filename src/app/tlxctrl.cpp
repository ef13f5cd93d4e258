// tlxctrl: the controller.
#include <CLI/CLI.hpp>
#include <iostream>

#include "app/common/ControllerApp.h"
#include "tlx/Version.h"

int main(int argc, char** argv) {
    CLI::App cli{"tallix controller"};
    cli.set_version_flag("--version", std::string("tlxctrl ") + tlx::version::kText);
    tlx::ControllerOptions o;
    std::string answer = "no";
    bool noppt = false;
    bool automation = false, noAutomation = false;
    cli.add_flag("--headless", o.headless, "run without widgets; log lines go to standard output");
    cli.add_option("--sim", o.simFile, "simulation set-up file")->check(CLI::ExistingFile);
    cli.add_option("--answer", answer, "answer to every question in headless mode")
        ->check(CLI::IsMember({"yes", "no"}));
    cli.add_option("--quit-after", o.quitAfterMs, "quit from the tray menu after this many milliseconds");
    cli.add_option("--configure-bases", o.configureBases,
                   "keypad set-up without a window: \"TYPE;PORT;LO;HI\" per base");
    cli.add_option("--basesim", o.basesim,
                   "where tlx-basesim serves network bases, HOST:PORT (default: the --sim file's [network] basesim=)");
    cli.add_flag("-n,--noppt", noppt, "do not use the presentation program (same as -noppt)");
    auto* on = cli.add_flag("--automation", automation,
                            "serve the automation class on the session bus as tallix_control.tallix (the "
                            "default without --headless); exits with code 3 when another controller serves it "
                            "or there is no session bus");
    cli.add_flag("--no-automation", noAutomation, "do not serve the automation class")->excludes(on);
    // The automation switch keeps its single-dash spelling.
    std::vector<std::string> args(argv, argv + argc);
    for (auto& a : args)
        if (a == "-noppt" || a == "-NOPPT") a = "--noppt";
    std::vector<char*> cargs;
    for (auto& a : args) cargs.push_back(a.data());
    try {
        cli.parse(static_cast<int>(cargs.size()), cargs.data());
    } catch (const CLI::ParseError& e) {
        return cli.exit(e);
    }
    o.answerYes = answer == "yes";
    // The keypad set-up without a window never needs a display.
    if (!o.configureBases.empty()) o.headless = true;
    if (noppt) o.commandLine = "-noppt";
    if (automation) o.automation = true;
    if (noAutomation) o.automation = false;
    return tlx::runController(argc, argv, o, std::cout);
}

// zelvarine: the command line of the embedded host.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include "app/commands.h"
#include "host/errors.h"

int main(int argc, char** argv)
{
    CLI::App cli{"Zelvarine: compositing tools on the command line and in flow files."};
    cli.name("zelvarine");
    cli.require_subcommand(1);
    cli.set_version_flag("--version", "zelvarine " ZV_VERSION);

    bool toolsJson = false;
    auto* tools = cli.add_subcommand("tools", "List the tools: name, class, short name, category.");
    tools->add_flag("--json", toolsJson, "Print JSON with the help text of each tool.");

    std::string infoTool;
    bool infoJson = false, infoAll = false;
    auto* info = cli.add_subcommand("info", "Show a tool's inputs and outputs as the host builds them.");
    info->add_option("TOOL", infoTool, "Display name, class name or short name.")->required();
    info->add_flag("--json", infoJson, "Print JSON.");
    info->add_flag("--all", infoAll, "List too the standard inputs that do nothing for this tool.");

    app::RunOptions run;
    auto* runCmd = cli.add_subcommand("run", "Run one tool: set inputs by id, write or print its output.");
    runCmd->add_option("TOOL", run.tool, "Display name, class name or short name.")->required();
    runCmd->add_option("ID=VALUE", run.assignments,
                       "Inputs by id: Image=in.exr, Center=0.3,0.7, Hue=0.25, Text=hello.");
    runCmd->add_option("-o,--output", run.output,
                       "The file to write, by its extension: an image, or .txt or .json for a number or text.");
    runCmd->add_option("--time", run.time, "The time to render at (default 0).");
    runCmd->add_option("--size", run.size, "WIDTHxHEIGHT for tools that make an image from nothing.");
    runCmd->add_option("--depth", run.depth, "int16 or float: the depth to work at.");
    runCmd->add_option("--frames", run.frames,
                       "A or A-B: render these frames in place of --time; -o then names a sequence (out.####.exr).");
    runCmd->add_option("--cache-mb", run.cacheMb, "Memory for frames kept between frames, in MB (default 2048).");
    runCmd->add_option("--slice", run.slice,
                       "x=, y= or z= and a number: the plane through a region that an image, .csv or .json "
                       "output shows (default z=0).");

    app::RenderOptions render;
    auto* renderCmd = cli.add_subcommand("render", "Render every Saver of a flow file for each frame.");
    renderCmd->add_option("FLOW", render.flow, "The flow file (JSON).")->required();
    renderCmd->add_option("--frames", render.frames, "A or A-B: the frames to render (default: the flow's).");
    renderCmd->add_option("--threads", render.threads, "At most N threads (default: one per core).");
    renderCmd->add_option("--cache-mb", render.cacheMb, "Memory for frames kept between frames, in MB (default 2048).");

    // A first word that is no command would otherwise read as a missing one.
    auto named = [&](const CLI::App* command) { return command->get_name() == argv[1]; };
    if (argc > 1 && argv[1][0] != '-' && cli.get_subcommands(named).empty()) {
        std::fprintf(stderr, "zelvarine: unknown command: %s (see: zelvarine --help)\n", argv[1]);
        return 2;
    }
    try {
        cli.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return cli.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return cli.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return cli.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "zelvarine: %s (see: zelvarine --help)\n", e.what());
        return 2;
    }

    try {
        if (tools->parsed()) return app::ToolsCommand(toolsJson);
        if (info->parsed()) return app::InfoCommand(infoTool, infoJson, infoAll);
        if (runCmd->parsed()) return app::RunCommand(run);
        if (renderCmd->parsed()) return app::RenderCommand(render);
    } catch (const host::BadInput& e) {
        std::fprintf(stderr, "zelvarine: %s\n", e.what());
        return 2;
    } catch (const std::filesystem::filesystem_error& e) {
        // A path given from outside that cannot be looked at: not entered, looping, too long.
        std::fprintf(stderr, "zelvarine: cannot use %s: %s\n", e.path1().c_str(), e.code().message().c_str());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zelvarine: internal error: %s\n", e.what());
        return 1;
    }
    return 1;
}

#include "command.h"
#include "report.h"

#include "karil/version.h"

#include <cstdio>

namespace {

// One row for each command.
constexpr void (*commands[])(CLI::App &, tool::Run &) = {
    tool::addShow,      tool::addConvert, tool::addVerify, tool::addKey,       tool::addRequest,
    tool::addAuthority, tool::addIssue,   tool::addRevoke, tool::addCrl,       tool::addPfx,
    tool::addSign,      tool::addEnvelop, tool::addOpen,   tool::addCompletion};

tool::Exit runCommand(int count, char **arguments) {
    CLI::App app("Shows, checks and makes certificates and what belongs to them.", "karil");
    app.set_version_flag("--version", "karil " KARIL_VERSION);
    app.require_subcommand(1);
    tool::Run run;
    for (const auto add : commands)
        add(app, run);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? tool::Exit::Good : tool::Exit::Misuse;
    }
    return tool::guarded(run);
}

} // namespace

int main(int count, char **arguments) {
    try {
        return static_cast<int>(runCommand(count, arguments));
    } catch (...) {
        std::fputs("karil: the command cannot be run\n", stderr);
        return static_cast<int>(tool::Exit::Unreadable);
    }
}

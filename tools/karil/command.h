// The commands. Each adds its options to the command line; when it was chosen, it stores what is to be run.
#ifndef KARIL_TOOL_COMMAND_H
#define KARIL_TOOL_COMMAND_H

#include "failure.h"

#include <CLI/CLI.hpp>
#include <functional>

namespace tool {

using Run = std::function<Exit()>;

void addShow(CLI::App &app, Run &run);
void addConvert(CLI::App &app, Run &run);
void addVerify(CLI::App &app, Run &run);
void addKey(CLI::App &app, Run &run);
void addRequest(CLI::App &app, Run &run);
void addAuthority(CLI::App &app, Run &run);
void addIssue(CLI::App &app, Run &run);
void addRevoke(CLI::App &app, Run &run);
void addCrl(CLI::App &app, Run &run);
void addPfx(CLI::App &app, Run &run);
void addSign(CLI::App &app, Run &run);
void addEnvelop(CLI::App &app, Run &run);
void addOpen(CLI::App &app, Run &run);
void addCompletion(CLI::App &app, Run &run);

} // namespace tool

#endif

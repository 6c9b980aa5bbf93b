// karil convert: the same object as DER or as PEM.
#include "command.h"
#include "files.h"
#include "kind.h"

#include <memory>

namespace tool {
namespace {

struct Options {
    std::string to;
    std::string in;
    std::string out;
};

Exit convert(const Options &options) {
    const Document document = readDocument(options.in);
    const KindFacts &facts = factsOf(kindOf(document));
    const Mode mode = facts.isSecret ? Mode::Private : Mode::Public;
    if (options.to == "der")
        writeFile(options.out, document.octets, mode);
    else
        writeFile(options.out, karil::bytesOf(pemText(document.octets, facts.label)), mode);
    return Exit::Good;
}

} // namespace

void addConvert(CLI::App &app, Run &run) {
    const auto options = std::make_shared<Options>();
    CLI::App *command = app.add_subcommand("convert", "Writes an object as DER or as PEM");
    command->add_option("--to", options->to, "der or pem")->required()->check(CLI::IsMember({"der", "pem"}));
    command->add_option("IN", options->in, "The file to read; - is standard input")->required();
    command->add_option("-o,--out", options->out, "The file to write; without it standard output");
    command->callback([options, &run] { run = [options] { return convert(*options); }; });
}

} // namespace tool

// karil completion: what shells need to complete command lines, made of the commands themselves.
#include "command.h"
#include "files.h"

#include <memory>

namespace tool {
namespace {

using Commands = std::vector<CLI::App *>;

Commands commandsOf(const CLI::App &app) {
    Commands found;
    for (CLI::App *each : const_cast<CLI::App &>(app).get_subcommands([](const CLI::App *) { return true; }))
        found.push_back(each);
    return found;
}

std::vector<const CLI::Option *> switchesOf(const CLI::App &app) {
    std::vector<const CLI::Option *> found;
    for (const CLI::Option *each : app.get_options())
        if (!each->get_positional() && !each->get_lnames().empty())
            found.push_back(each);
    return found;
}

// The words that an option takes, out of "TEXT:{der,pem}"; empty if it takes any.
std::string choicesOf(const CLI::Option &option) {
    const std::string type = option.get_type_name();
    const std::size_t start = type.find('{');
    if (start == std::string::npos)
        return "";
    std::string words = type.substr(start + 1, type.find('}') - start - 1);
    std::replace(words.begin(), words.end(), ',', ' ');
    return words;
}

std::string nameOf(const CLI::Option &option) {
    return "--" + option.get_lnames().front();
}

bool takesValue(const CLI::Option &option) {
    return option.get_expected_max() > 0;
}

// The words that the arguments of a command are chosen from.
std::string choicesOf(const CLI::App &app) {
    std::string words;
    for (const CLI::Option *each : app.get_options())
        if (each->get_positional())
            words += choicesOf(*each);
    return words;
}

struct Bash {
    std::string commands; // which word leads to which command
    std::string words;    // what a command is completed with
    std::string choices;  // what an option is completed with
};

void addBash(Bash &bash, const CLI::App &app, const std::string &path) {
    std::string words = choicesOf(app);
    words += words.empty() ? "" : " ";
    for (const CLI::App *each : commandsOf(app)) {
        const std::string inner = path.empty() ? each->get_name() : path + " " + each->get_name();
        words += each->get_name() + " ";
        bash.commands.append("        '").append(path).append("/").append(each->get_name());
        bash.commands.append("') command='").append(inner).append("' ;;\n");
        addBash(bash, *each, inner);
    }
    for (const CLI::Option *each : switchesOf(app)) {
        words += nameOf(*each) + " ";
        if (const std::string choices = choicesOf(*each); !choices.empty())
            bash.choices.append("    '")
                .append(path)
                .append(":")
                .append(nameOf(*each))
                .append("') words='")
                .append(choices)
                .append("' ;;\n");
    }
    words.pop_back();
    bash.words += "        '" + path + "') words='" + words + "' ;;\n";
}

std::string bashScript(const CLI::App &app) {
    Bash bash;
    addBash(bash, app, "");
    return "_karil() {\n"
           "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
           "    local command= words= word\n"
           "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        case \"$command/$word\" in\n" +
           bash.commands +
           "        esac\n"
           "    done\n"
           "    case \"$command:$previous\" in\n" +
           bash.choices +
           "    *)\n"
           "        case $command in\n" +
           bash.words +
           "        esac\n"
           "        # Nothing to offer here means a file name.\n"
           "        [[ $current == -* || $words != --* ]] || words=\n"
           "        ;;\n"
           "    esac\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
           "}\n"
           "complete -o default -F _karil karil\n";
}

// Text between single quotes, in which _arguments has a meaning for brackets and colons.
std::string quoted(const std::string &text) {
    std::string out;
    for (const char character : text)
        if (character == '\'')
            out += "'\\''";
        else if (character == '[' || character == ']' || character == ':')
            out += std::string("\\") + character;
        else
            out += character;
    return out;
}

void addZsh(std::string &script, const CLI::App &app, const std::string &name) {
    const Commands commands = commandsOf(app);
    for (const CLI::App *each : commands)
        addZsh(script, *each, name + "_" + each->get_name());
    script += name + "() {\n    local line state\n    _arguments -C";
    for (const CLI::Option *each : switchesOf(app)) {
        script += " \\\n        '*" + nameOf(*each) + "[" + quoted(each->get_description()) + "]";
        const std::string choices = choicesOf(*each);
        if (takesValue(*each))
            script += choices.empty() ? ":value:_files" : ":value:(" + choices + ")";
        script += "'";
    }
    if (commands.empty()) {
        const std::string choices = choicesOf(app);
        script += " \\\n        '*:file:" + (choices.empty() ? "_files" : "(" + choices + ")") + "'\n}\n\n";
        return;
    }
    script += " \\\n        '1:command:->command' '*::argument:->argument'\n    case $state in\n    command)\n"
              "        local -a commands=(";
    for (const CLI::App *each : commands)
        script += "\n            '" + each->get_name() + ":" + quoted(each->get_description()) + "'";
    script += ")\n        _describe command commands\n        ;;\n    argument)\n        case $line[1] in\n";
    for (const CLI::App *each : commands)
        script += "        " + each->get_name() + ") " + name + "_" + each->get_name() + " ;;\n";
    script += "        esac\n        ;;\n    esac\n}\n\n";
}

std::string zshScript(const CLI::App &app) {
    std::string script = "#compdef karil\n\n";
    addZsh(script, app, "_karil");
    return script + "_karil \"$@\"\n";
}

} // namespace

void addCompletion(CLI::App &app, Run &run) {
    const auto shell = std::make_shared<std::string>();
    CLI::App *command = app.add_subcommand("completion", "Writes what a shell needs to complete karil's command lines");
    command->add_option("SHELL", *shell, "bash or zsh")->required()->check(CLI::IsMember({"bash", "zsh"}));
    command->callback([shell, &app, &run] {
        run = [shell, &app] {
            const std::string script = *shell == "bash" ? bashScript(app) : zshScript(app);
            writeFile("-", karil::bytesOf(script), Mode::Public);
            return Exit::Good;
        };
    });
}

} // namespace tool

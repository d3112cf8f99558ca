#include "pages/definitions.h"
#include "pages/pages.h"

#include <algorithm>

namespace command {
namespace {

/// For a place within single quotes of a shell.
std::string ShellQuoted(std::string text) {
    for (std::size_t at = 0; (at = text.find('\'', at)) != std::string::npos; at += 4)
        text.replace(at, 1, "'\\''");
    return text;
}

std::string Names(const std::vector<VerbText>& verbs) {
    std::string names;
    for (const VerbText& verb : verbs)
        names.append(names.empty() ? "" : " ").append(verb.name);
    return names;
}

std::string OptionNames(const VerbText& verb) {
    std::string names;
    for (const OptionText& option : verb.options)
        for (const std::string& name : option.names)
            names.append(names.empty() ? "" : " ").append(name);
    return names;
}

/// The first sentence or clause: completions have one line.
std::string Short(const std::string& about) {
    return about.substr(0, about.find_first_of(".:;"));
}

} // namespace

void WriteBashCompletion(const CLI::App& app, std::ostream& out) {
    const std::vector<VerbText> verbs = VerbsOf(app);
    out << "_odfmodel() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} verb=${COMP_WORDS[1]} options=\n"
           "    COMPREPLY=()\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        COMPREPLY=($(compgen -W '"
        << Names(verbs)
        << " --help --version' -- \"$word\"))\n"
           "        return\n"
           "    fi\n"
           "    case $verb in\n";
    for (const VerbText& verb : verbs)
        out << "    " << verb.name << ") options='"
            << (verb.name == "help" ? Names(verbs) : OptionNames(verb)) << "' ;;\n";
    out << "    esac\n"
           "    case $verb:$word in\n"
           "    help:* | *:-*) COMPREPLY=($(compgen -W \"$options\" -- \"$word\")) ;;\n"
           "    esac\n" // nothing found: names of files, which may have blanks
           "}\n"
           "complete -o default -F _odfmodel odfmodel\n";
}

void WriteZshCompletion(const CLI::App& app, std::ostream& out) {
    const std::vector<VerbText> verbs = VerbsOf(app);
    const auto escaped = [](std::string text) {
        for (std::size_t at = 0; (at = text.find_first_of("[]:", at)) != std::string::npos; at += 2)
            text.insert(at, 1, '\\');
        return ShellQuoted(std::move(text));
    };
    out << "#compdef odfmodel\n"
           "_odfmodel() {\n"
           "    local -a verbs=(\n";
    for (const VerbText& verb : verbs)
        out << "        '" << verb.name << ':' << escaped(Short(verb.about)) << "'\n";
    out << "    )\n"
           "    if (( CURRENT == 2 )); then\n"
           "        _describe command verbs\n"
           "        return\n"
           "    fi\n"
           "    local verb=$words[2]\n"
           "    shift words\n"
           "    (( CURRENT-- ))\n"
           "    case $verb in\n";
    for (const VerbText& verb : verbs) {
        out << "    " << verb.name << ")\n        _arguments \\\n";
        for (const OptionText& option : verb.options)
            for (const std::string& name : option.names) {
                out << "            '" << name << '[' << escaped(Short(option.about)) << ']';
                if (!option.value.empty())
                    out << ':' << escaped(option.value) << ':' << (option.takesFile ? "_files" : "");
                out << "' \\\n";
            }
        out << (verb.name == "help" ? "            '1:command:(" + Names(verbs) + ")'\n"
                                    : std::string("            '*:file:_files'\n"))
            << "        ;;\n";
    }
    out << "    esac\n"
           "}\n"
           "_odfmodel \"$@\"\n";
}

void WriteFishCompletion(const CLI::App& app, std::ostream& out) {
    const std::vector<VerbText> verbs = VerbsOf(app);
    for (const VerbText& verb : verbs)
        out << "complete -c odfmodel -n __fish_use_subcommand -f -a " << verb.name << " -d '"
            << ShellQuoted(Short(verb.about)) << "'\n";
    for (const VerbText& verb : verbs) {
        const std::string where = "complete -c odfmodel -n '__fish_seen_subcommand_from " + verb.name + "'";
        if (verb.name == "help") out << where << " -f -a '" << Names(verbs) << "'\n";
        for (const OptionText& option : verb.options) {
            out << where;
            for (const std::string& name : option.names)
                out << (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
            if (!option.value.empty()) out << (option.takesFile ? " -r" : " -x");
            out << " -d '" << ShellQuoted(Short(option.about)) << "'\n";
        }
    }
}

} // namespace command

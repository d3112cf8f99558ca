#include "pages/definitions.h"
#include "pages/pages.h"

#include <odfmodel/version.h>

namespace command {
namespace {

/// Text of a manual page: a backslash, a minus and a point or quote at the start of a line would be taken for
/// orders.
std::string Roff(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n'))
            out += std::string("\\&") + c;
        else
            out += c;
    }
    return out;
}

void WriteOption(const OptionText& option, std::ostream& out) {
    out << ".TP\n";
    for (const std::string& name : option.names)
        out << (&name == &option.names.front() ? "" : ", ") << "\\fB" << Roff(name) << "\\fR";
    if (!option.value.empty()) out << " \\fI" << Roff(option.value) << "\\fR";
    out << '\n' << Roff(option.about) << ".\n";
}

} // namespace

void WriteManual(const CLI::App& app, std::ostream& out) {
    const std::vector<VerbText> verbs = VerbsOf(app);
    out << ".TH ODFMODEL 1 \"\" \"odfmodel " ODFMODEL_VERSION "\"\n"
        << ".SH NAME\nodfmodel \\- " << Roff("look into OpenDocument files, change and convert them") << '\n'
        << ".SH SYNOPSIS\n";
    for (const VerbText& verb : verbs)
        out << ".B odfmodel " << Roff(verb.name) << "\n" << Roff(verb.usage) << "\n.br\n";
    out << ".SH DESCRIPTION\n"
        << Roff(app.get_description()) << "\nResults go to the standard output, faults to the standard error "
        << "stream, a line each. With several files one that fails doesn't stop the others.\n"
        << ".SH COMMANDS\n";
    for (const VerbText& verb : verbs) {
        out << ".SS odfmodel " << Roff(verb.name) << ' ' << Roff(verb.usage) << '\n'
            << Roff(verb.about) << ".\n";
        for (const OptionText& argument : verb.arguments)
            WriteOption(argument, out);
        for (const OptionText& option : verb.options)
            WriteOption(option, out);
    }
    out << ".SH EXIT STATUS\n" << Roff(app.get_footer()) << '\n';
}

} // namespace command

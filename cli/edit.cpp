#include "edit.h"

#include "console.h"
#include "io/output.h"
#include "package/open_document.h"

#include <iostream>

namespace command {

void Edit::addOptions(CLI::App& app) {
    Files::addOptions(app);
    auto* const inPlace = app.add_flag("-i,--in-place", isInPlace_, "Change the files themselves");
    app.add_option("-o,--output", output_, "File for the result of one FILE; - is the standard output")
        ->type_name("OUT")
        ->excludes(inPlace);
    app.add_flag("--incomplete", allowsIncomplete_,
                 "Write a document that can't be read whole, too, with what could be read");
    app.add_flag("--strict", isStrict_, kStrictHelp);
}

std::ostream& Edit::facts() const {
    return output_ == kStandardStream ? std::cerr : std::cout;
}

bool Edit::checkTarget() {
    const bool hasInput = std::find(paths.begin(), paths.end(), kStandardStream) != paths.end();
    if (hasInput && isInPlace_) {
        Complain({}, "the standard input can't be changed in place");
        return false;
    }
    if (!isWriting() && hasInput && paths.size() == 1) output_ = kStandardStream;
    if (!isWriting()) {
        Complain({}, "-i changes the files themselves, -o OUT writes another one; one of them is needed");
        return false;
    }
    if (!output_.empty() && paths.size() > 1) {
        Complain({}, "-o takes the result of one FILE alone");
        return false;
    }
    return output_ != kStandardStream || CheckStandardOutput();
}

ExitCode Edit::changeOne(const std::string& path, const Change& change) {
    ODF::Document document;
    const ExitCode opened = OpenDocument(document, path, passwords, isStrict_);
    if (!document.IsOpen()) return opened;
    const std::string& target = isInPlace_ ? path : output_;
    if (opened != ExitCode::Ok && !allowsIncomplete_) return RefuseIncomplete(target);
    const Outcome outcome = change(document, path);
    if (outcome == Outcome::Failed) return ExitCode::Failure;
    if (outcome == Outcome::Unchanged && isInPlace_) return opened;
    ODF::SaveOptions save;
    save.allowsIncomplete = allowsIncomplete_;
    return Worst(opened, SaveDocument(document, target, save));
}

ExitCode Edit::run(const Change& change) {
    if (!checkTarget()) return ExitCode::Usage;
    return forEach([&](const std::string& path) { return changeOne(path, change); });
}

} // namespace command

#pragma once

#include "exit_code.h"
#include "files.h"

#include <odfmodel/document/open_document.h>

#include <functional>
#include <iosfwd>
#include <string>

namespace command {

/// The verbs that open documents, change them and save them: where the result goes, what happens to a
/// document that can't be read whole, the exit codes.
class Edit : public Files {
public:
    /// Adds FILE, the options about passwords, --in-place, --output, --incomplete and --strict.
    void addOptions(CLI::App& app);

    enum class Outcome {
        Changed,
        Unchanged, ///< a file that was to be changed in place isn't written
        Failed     ///< told already; nothing is written
    };
    using Change = std::function<Outcome(ODF::Document& document, const std::string& path)>;
    /// Opens each document, has it changed, and saves it.
    ExitCode run(const Change& change);

    /// Whether the arguments name a place for the result, be it the file itself.
    bool isWriting() const { return isInPlace_ || !output_.empty(); }
    /// Where the verb tells what it did: the standard output, unless the document goes there.
    std::ostream& facts() const;

private:
    bool checkTarget();
    ExitCode changeOne(const std::string& path, const Change& change);

    std::string output_;
    bool isInPlace_ = false;
    bool allowsIncomplete_ = false;
    bool isStrict_ = false;
};

} // namespace command

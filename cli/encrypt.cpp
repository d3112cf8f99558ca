#include "commands.h"
#include "console.h"
#include "edit.h"
#include "verb.h"

namespace command {
namespace {

struct EncryptOptions : Edit {
    std::string text;
    std::string file;
    std::string scheme;
};

/// The password of the options, or one that is typed twice.
std::optional<std::string> NewPassword(const EncryptOptions& options) {
    std::optional<std::string> password;
    if (!options.file.empty())
        password = ReadPasswordFile(options.file);
    else if (!options.text.empty())
        password = options.text;
    else {
        password = AskPassword("New password");
        if (!password)
            Complain({}, "no new password; --new-password-file names a file that has it");
        else if (AskPassword("The same again") != password) {
            Complain({}, "the passwords differ");
            return std::nullopt;
        }
    }
    if (password && password->empty()) {
        Complain(options.file, "the new password is empty");
        return std::nullopt;
    }
    return password;
}

std::optional<ODF::EncryptionScheme> SchemeOf(const std::string& word) {
    if (word.empty()) return std::nullopt;
    return word == "gcm" ? ODF::EncryptionScheme::Aes256Gcm : ODF::EncryptionScheme::Aes256Cbc;
}

ExitCode Encrypt(EncryptOptions& options) {
    const std::optional<std::string> password = NewPassword(options);
    if (!password) return ExitCode::Usage;
    return options.run([&](ODF::Document& document, const std::string& path) {
        if (document.SetPassword(*password, SchemeOf(options.scheme))) return Edit::Outcome::Changed;
        Complain(path, "one XML file can't be encrypted; a package can");
        return Edit::Outcome::Failed;
    });
}

ExitCode Decrypt(Edit& options) {
    return options.run([](ODF::Document& document, const std::string& /*path*/) {
        if (!document.IsEncrypted()) return Edit::Outcome::Unchanged;
        document.RemovePassword();
        return Edit::Outcome::Changed;
    });
}

} // namespace

void AddEncrypt(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<EncryptOptions>(
        app, exitCode, Encrypt, "encrypt",
        "Encrypts documents with a password, or gives encrypted ones a new one. Without an option\n"
        "the new password is asked for");
    options.addOptions(verb);
    auto* const text = verb.add_option("--new-password", options.text,
                                       "Password to encrypt with (other users of the machine may see it in "
                                       "the list of processes)");
    text->type_name("TEXT");
    verb.add_option("--new-password-file", options.file, "File whose first line is that password")
        ->type_name("FILE")
        ->excludes(text);
    verb.add_option("--scheme", options.scheme,
                    "cbc: AES-256 in CBC mode, which all office suites since 2011 read; gcm: AES-256 in GCM\n"
                    "mode with Argon2id, for newer ones alone. Without it that of the file, else cbc")
        ->type_name("SCHEME")
        ->check(CLI::IsMember({"cbc", "gcm"}));
}

void AddDecrypt(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] =
        AddVerb<Edit>(app, exitCode, Decrypt, "decrypt", "Writes encrypted documents in clear");
    options.addOptions(verb);
}

} // namespace command

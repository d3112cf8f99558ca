#include "commands.h"
#include "console.h"
#include "convert/csv_reader.h"
#include "convert/csv_writer.h"
#include "convert/format.h"
#include "convert/html.h"
#include "convert/markdown.h"
#include "files.h"
#include "io/output.h"
#include "kinds.h"
#include "package/open_document.h"
#include "package/reason.h"
#include "verb.h"

#include <odfmodel/document/document_text.h>
#include <odfmodel/document/flat.h>

#include <filesystem>
#include <iostream>
#include <set>

namespace command {
namespace {

constexpr std::string_view kTab = "tab";

struct ConvertOptions : Files {
    std::string to;
    std::string output;
    std::string sheet;
    std::string separator;
    bool isCsvInput = false;
    bool isTextOnly = false;
    bool isForced = false;
    std::set<std::string> written; ///< so far

    char separatorFor(std::string_view extension) const {
        if (separator.empty()) return extension == "tsv" ? '\t' : ',';
        return separator == kTab ? '\t' : separator.front();
    }
};

bool IsFolder(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

/// A document that is read, from whatever form.
struct Source {
    ODF::Document document;
    ExitCode code = ExitCode::Ok;
};

Source Load(const std::string& path, const std::string& argument, const ConvertOptions& options) {
    Source source;
    if (!options.isCsvInput && !IsCsvName(argument)) {
        source.code = OpenDocument(source.document, path, options.passwords);
        return source;
    }
    const MemberBytes bytes = ReadWholeFile(path);
    if (!bytes.isWhole) {
        Complain(path, OpenReason(path, ODF::Status::NotReadable, {}));
        source.code = ExitCode::CannotOpen;
        return source;
    }
    CsvInput input;
    input.separator = options.separatorFor(ExtensionOf(argument));
    input.isTextOnly = options.isTextOnly;
    source.document = ReadCsv(bytes.text(), input);
    return source;
}

/// Where the converted file goes.
std::string TargetPath(const std::string& argument, const ODF::Document& document, const Target& target,
                       const ConvertOptions& options) {
    if (options.output.empty()) return kStandardStream;
    if (!IsFolder(options.output)) return options.output;
    std::string extension = target.extension;
    if (extension.empty()) switch (target.format) {
        case Format::Text:
            extension = "txt";
            break;
        case Format::Markdown:
            extension = "md";
            break;
        case Format::Html:
            extension = "html";
            break;
        case Format::Csv:
            extension = "csv";
            break;
        case Format::Flat:
        case Format::Package:
            extension = ExtensionFor(document.Kind(), target.format == Format::Flat, document.IsTemplate());
            break;
        }
    if (extension.empty()) extension = target.format == Format::Flat ? "xml" : "zip";
    const std::string stem =
        argument == kStandardStream ? "stdin" : std::filesystem::path(argument).stem().string();
    return (std::filesystem::path(options.output) / (stem + "." + extension)).string();
}

ExitCode Fail(const std::string& path, const std::string& reason) {
    Complain(path, reason);
    return ExitCode::Failure;
}

/// As a document in the other form, or the same one again.
ExitCode SaveAs(ODF::Document& document, const std::string& path, const std::string& to,
                const Target& target) {
    const FileKind asked = KindOfFileName(std::string(".").append(target.extension));
    if (!target.extension.empty() && asked.kind != document.Kind())
        return Fail(path, "a document of this kind doesn't become an ." + target.extension);
    if (!target.extension.empty() && !asked.isFlat && asked.isTemplate != document.IsTemplate())
        return Fail(path, "a document doesn't become a template, nor a template a document");
    const bool isFlat = target.format == Format::Flat;
    if (!isFlat && to == kStandardStream && !CheckStandardOutput()) return ExitCode::Usage;
    if (document.IsFlat() == isFlat) return SaveDocument(document, to);
    ODF::Document other;
    const ODF::Result made = isFlat ? ODF::ToFlat(document, other) : ODF::ToPackage(document, other);
    if (!made) {
        Complain(path, Reason(made.Code(), made.Notes()));
        return made.Code() == ODF::Status::Damaged ? ExitCode::CannotOpen : ExitCode::Failure;
    }
    ComplainNotes(path, made.Notes());
    return SaveDocument(other, to);
}

ExitCode SaveCsv(ODF::Document& document, const std::string& path, const std::string& to,
                 const Target& target, const ConvertOptions& options) {
    ODF::Sheets sheets(document);
    if (sheets.empty()) return Fail(path, "there are no sheets in it");
    ODF::Sheet* const sheet = options.sheet.empty() ? &sheets[0] : sheets.Find(options.sheet);
    if (!sheet) {
        std::string names;
        for (const ODF::Sheet& one : sheets)
            names.append(names.empty() ? "" : ", ").append(one.Name());
        return Fail(path, "there is no sheet " + options.sheet + "; there are " + names);
    }
    if (options.sheet.empty() && sheets.size() > 1)
        Complain(path,
                 "only the first of " + std::to_string(sheets.size()) + " sheets; --sheet names another");
    bool isCut = false;
    const std::string csv = WriteCsv(*sheet, {options.separatorFor(target.extension)}, isCut);
    const ExitCode code = WriteBytes(csv, to);
    return isCut ? Worst(code, Fail(path, kCut)) : code;
}

ExitCode SaveText(ODF::Document& document, const std::string& path, const std::string& to, Format format) {
    Markup markup;
    if (format == Format::Markdown)
        markup = ToMarkdown(document);
    else if (format == Format::Html)
        markup = ToHtml(document);
    else
        markup.isCut = !ODF::ForEachLine(
            document, [&](std::string_view line) { markup.text += Printable(line) + '\n'; });
    ExitCode code = WriteBytes(markup.text, to);
    if (markup.isCut) code = Worst(code, Fail(path, kCut));
    // A document that isn't whole was told already.
    if (!markup.pictures && document.IsWhole())
        code = Worst(code, Fail(path, "its pictures are left out: " + markup.pictures.Text()));
    return code;
}

ExitCode ConvertOne(const std::string& path, const std::string& argument, const Target& target,
                    ConvertOptions& options) {
    Source source = Load(path, argument, options);
    if (!source.document.IsOpen()) return source.code;
    const std::string to = TargetPath(argument, source.document, target, options);
    if (to != kStandardStream && !options.written.insert(to).second) {
        Complain(path, "its result would replace that of another FILE: " + to);
        return ExitCode::CannotWrite;
    }
    std::error_code error;
    if (to != kStandardStream && !options.isForced && std::filesystem::is_regular_file(to, error)) {
        Complain(to, "is there already; --force replaces it");
        return ExitCode::CannotWrite;
    }
    switch (target.format) {
    case Format::Flat:
    case Format::Package:
        return source.code == ExitCode::Ok ? SaveAs(source.document, path, to, target) : RefuseIncomplete(to);
    case Format::Csv:
        return Worst(source.code, SaveCsv(source.document, path, to, target, options));
    default:
        return Worst(source.code, SaveText(source.document, path, to, target.format));
    }
}

ExitCode Run(ConvertOptions& options) {
    const std::string word = options.to.empty() ? ExtensionOf(options.output) : options.to;
    const std::optional<Target> target = TargetOf(word);
    if (!target) {
        std::string words;
        for (const std::string& known : TargetWords())
            words += (words.empty() ? "" : ", ") + known;
        Complain({},
                 (word.empty() ? "--to or the name of OUT must tell the form" : "there is no form " + word) +
                     ("; there are " + words + " and extensions such as odt and fods"));
        return ExitCode::Usage;
    }
    if (options.paths.size() > 1 && !IsFolder(options.output)) {
        Complain({}, "-o must name a folder for several files");
        return ExitCode::Usage;
    }
    constexpr std::string_view kQuotesAndEnds = "\"\r\n";
    const bool isWord = options.separator == kTab;
    if (!isWord && (options.separator.size() > 1 || options.separator.find_first_of(kQuotesAndEnds) == 0)) {
        Complain({}, "--separator is one character of ASCII, but no quote or line end, or the word tab");
        return ExitCode::Usage;
    }
    if (!options.sheet.empty() && target->format != Format::Csv) {
        Complain({}, "--sheet is for csv and tsv; other forms have all sheets");
        return ExitCode::Usage;
    }
    return options.forEach([&](const std::string& path, const std::string& argument) {
        return ConvertOne(path, argument, *target, options);
    });
}

} // namespace

void AddConvert(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<ConvertOptions>(
        app, exitCode, Run, "convert",
        "Converts documents: a package to one XML file and back, text, Markdown, HTML, a sheet to CSV, and\n"
        "CSV to a spreadsheet. The form comes from the name of OUT, or from --to");
    options.addOptions(verb);
    verb.add_option(
            "--to", options.to,
            "Form to convert to: txt, md, html, csv, tsv, flat (one XML file), package, or an extension\n"
            "such as fodt")
        ->type_name("FORM");
    verb.add_option(
            "-o,--output", options.output,
            "File to write, or a folder for files of the same names; without it, or as -, the standard\n"
            "output")
        ->type_name("OUT");
    verb.add_flag("--force", options.isForced, "Replace files that are there already");
    verb.add_option("--sheet", options.sheet, "Sheet to write as CSV; the first without it")
        ->type_name("NAME");
    verb.add_option("--separator", options.separator,
                    "What separates the cells of CSV: a character, or the word tab; a comma without it")
        ->type_name("CHARACTER");
    verb.add_flag("--csv", options.isCsvInput, "The input is CSV, whatever its name");
    verb.add_flag("--text-cells", options.isTextOnly,
                  "All cells of a CSV input are texts, also what looks like a number or date");
}

} // namespace command

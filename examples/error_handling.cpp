// Opens a file that may be anything, tells what is wrong with it, and saves what there is of it.
// error_handling IN OUT [PASSWORD]
#include <odfmodel/odfmodel.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    ODF::Document document;
    ODF::OpenOptions options;
    if (argc > 3) options.password = argv[3];
    const ODF::Result opened = document.Open(argv[1], options);

    // A success may have notes, too: what was odd, but could be read.
    for (const ODF::Note& note : opened.Notes())
        std::cout << (note.severity == ODF::Severity::Error ? "error: " : "note: ") << note.member << ' '
                  << note.text << (note.line > 0 ? " in line " + std::to_string(note.line) : "") << '\n';
    if (opened.Code() == ODF::Status::PasswordNeeded || opened.Code() == ODF::Status::WrongPassword)
        std::cout << "give the password as third argument\n"; // a program would ask again
    else if (!opened)
        std::cout << opened.Text() << '\n';
    if (!document.IsOpen()) return 1; // nothing could be read

    // A damaged document is open with what came before the fault, and is saved only on demand.
    ODF::SaveOptions save;
    save.allowsIncomplete = !document.IsWhole();
    if (const ODF::Result saved = document.Save(argv[2], save); !saved) {
        std::cout << saved.Text() << '\n'; // the old file is as it was, and the document still open
        return 1;
    }
    std::cout << (document.IsWhole() ? "saved\n" : "saved what could be read\n");
}

// Reads files of strangers with bounds of its own and tells which it refuses.  hostile_input FILE...
#include <odfmodel/odfmodel.h>

#include <chrono>
#include <iostream>

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        ODF::OpenOptions options;
        options.limits.totalBytes = 64U << 20; // of all members together, unpacked
        options.limits.freeObjects = 500'000;  // elements that even a small file may have
        options.limits.depth = 256;            // of elements within elements
        options.limits.keyWork = 1'000'000;    // what a password may cost
        options.refusesAmbiguous = true;       // archives that programs read differently
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        options.progress = [&](const ODF::Progress&) { return std::chrono::steady_clock::now() < end; };

        ODF::Document document;
        const ODF::Result opened = document.Open(argv[i], options);
        std::cout << argv[i] << ": " << opened.Text() << '\n';
        if (!opened) continue;
        // What a file says isn't true only because the file could be read: take no name as a path, and no
        // count without a bound.
        std::size_t cells = 0;
        for (const ODF::Sheet& sheet : ODF::Sheets(document))
            for (const ODF::SheetRow& row : sheet.UsedRows())
                for (const ODF::SheetCell& cell : row.UsedCells())
                    if (!cell.Text().empty()) ++cells; // once for each element, whatever its repeat
        std::cout << cells << " cells with a text\n";
    }
}

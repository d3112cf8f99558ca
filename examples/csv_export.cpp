// Writes each sheet of a spreadsheet as comma-separated text: OUT1.csv, OUT2.csv ...  csv_export IN.ods OUT
#include <odfmodel/odfmodel.h>

#include <fstream>

int main(int argc, char** argv) {
    ODF::Document document;
    if (argc != 3 || !document.Open(argv[1])) return 1;
    for (int number = 0; const ODF::Sheet& sheet : ODF::Sheets(document)) {
        std::ofstream out(argv[2] + std::to_string(++number) + ".csv");
        for (std::uint32_t lines = 0; const ODF::SheetRow& row : sheet.UsedRows()) {
            std::string line;
            for (std::uint32_t commas = 0; const ODF::SheetCell& cell : row.UsedCells()) {
                std::string text = cell.Text();
                for (std::size_t at = 0; (at = text.find('"', at)) != std::string::npos; at += 2)
                    text.insert(at, 1, '"');
                for (std::uint32_t i = 0; i < cell.ColumnRepeat(); ++i, commas = cell.Column() + i - 1)
                    line.append(cell.Column() + i - commas, ',') += '"' + text + '"';
            }
            for (; lines < row.Index() + row.Repeat(); ++lines)
                out << (lines < row.Index() ? "" : line) << '\n';
        }
    }
}

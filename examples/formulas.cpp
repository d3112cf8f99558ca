// Calculates nothing itself: writes formulas with their results, and shows those of a sheet.  formulas
// OUT.ods
#include <odfmodel/odfmodel.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Spreadsheet);
    ODF::Sheets sheets(document);
    ODF::Sheet& sheet = sheets[0];
    for (int i = 1; i <= 3; ++i)
        sheet.AppendRow({i * 1.5});
    // References are in brackets. Programs show the result until they calculate again.
    sheet.SetFormula("B1", "=SUM([.A1:.A3])", 9);
    sheet.SetFormula("B2", "=IF([.B1]>5;\"much\";\"little\")", "much");

    for (const ODF::SheetRow& row : sheet.UsedRows())
        for (const ODF::SheetCell& cell : row.UsedCells())
            if (!cell.Formula().empty())
                std::cout << ODF::PrintCell({cell.Row(), cell.Column()}) << ": " << cell.Formula() << " is "
                          << cell.Text() << '\n';
    return document.Save(argv[1]) ? 0 : 1;
}

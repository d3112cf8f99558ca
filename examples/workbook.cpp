// Writes a workbook: a sheet of many rows with every kind of value, and one with their sums.
// workbook OUT.ods [ROWS]
#include <odfmodel/odfmodel.h>

#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const unsigned count = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 100000;

    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Spreadsheet);
    ODF::Sheets sheets(document);
    ODF::Sheet& orders = sheets[0];
    orders.Table().SetTableName("Orders");
    orders.AppendRow({"Order", "Customer", "Day", "Time", "Price", "Discount", "Paid"});
    double total = 0;
    for (unsigned i = 0; i < count; ++i) {
        const double price = 5 + i % 1000 / 8.0;
        total += price;
        orders.AppendRow({i + 1, "Customer " + std::to_string(i % 97),
                          ODF::CellValue::Date(2024, 1 + i / 28 % 12, 1 + i % 28),
                          ODF::CellValue::Time(i / 60 % 24, i % 60), ODF::CellValue::Currency(price, "EUR"),
                          ODF::CellValue::Percentage(i % 20 / 100.0), i % 3 == 0});
    }

    if (ODF::Sheet* const sums = sheets.Add("Sums")) {
        sums->Set("A1", "Total of all orders");
        sums->SetFormula("B1", "=SUM([$Orders.E2:.E" + std::to_string(count + 1) + "])", total);
        sums->Set("A3", "A note of two lines,\n  and\ttabs and  blanks");
    }
    const ODF::Result saved = document.Save(argv[1]);
    if (!saved) std::cerr << argv[1] << ": " << saved.Text() << '\n';
    return saved ? 0 : 1;
}

// Writes a sheet of numbers with a chart of them.  chart OUT.ods
#include <odfmodel/odfmodel.h>

#include <cmath>

using namespace ODF;

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    Document document = Document::New(DocumentKind::Spreadsheet);
    Sheets sheets(document);
    Sheet& sheet = sheets[0];
    sheet.Table().SetTableName("Sales");
    sheet.AppendRow({"Month", "North", "South"});
    for (unsigned month = 1; month <= 12; ++month)
        sheet.AppendRow({CellValue::Date(2024, month, 1).Text().substr(0, 7),
                         std::round(100 + 40 * std::sin(month)), std::round(80 + 30 * std::cos(month))});

    // A chart is a document of its own, which takes its numbers from ranges of the sheet.
    Document chart = Document::New(DocumentKind::Chart);
    CChartChart& area = *chart.Body()->Descendants<CChartChart>().begin();
    CChartPlotArea& plot = *area.Child<CChartPlotArea>();
    area.SetChartClass("chart:line");
    SetText(area.Insert<CChartTitle>(plot)->Append<CTextP>(), "Sales in 2024");
    area.Insert<CChartLegend>(plot)->SetChartLegendPosition(ST_ChartLegendPosition::End);
    plot.SetTableCellRangeAddress("Sales.A1:Sales.C13");
    plot.SetChartDataSourceHasLabels(ST_ChartDataSourceHasLabels::Both);
    plot.Child<CChartAxis>()->Append<CChartCategories>().SetTableCellRangeAddress("Sales.A2:Sales.A13");
    Styles styles(chart);
    for (CChartAxis& axis : plot.Children<CChartAxis>())
        styles.Format<CStyleChartProperties>(axis, [](auto& look) { look.SetChartDisplayLabel(true); });
    for (const auto& [column, color] : {std::pair("B", Color{0x20, 0x60, 0xB0}), {"C", {0xE0, 0x80, 0}}}) {
        auto& series = plot.Append<CChartSeries>();
        series.SetChartValuesCellRangeAddress(CTulStringW("Sales.") + column + "2:Sales." + column + "13");
        series.SetChartLabelCellAddress(CTulStringW("Sales.") + column + "1");
        styles.Format<CStyleGraphicProperties>(series, [color = color](auto& line) {
            line.SetDrawStroke(ST_DrawStroke::Solid);
            line.SetSvgStrokeColor(color);
        });
    }
    PlaceObject(document, *sheet.MakeCell(1, 4), chart,
                {.width = Length::Centimeters(16), .height = Length::Centimeters(9)});
    return document.Save(argv[1]) ? 0 : 1;
}

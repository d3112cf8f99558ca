// Writes a letter for each line of a list, whose first line has the names of the fields.
// mail_merge LETTER.odt LIST.csv OUT.odt
#include <odfmodel/odfmodel.h>

#include <fstream>
#include <iostream>
#include <sstream>

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, ',');)
        fields.push_back(field);
    return fields;
}

int main(int argc, char** argv) {
    ODF::Document letter;
    if (argc != 4 || !letter.Open(argv[1]) || !letter.Text()) return 1;
    std::ifstream list(argv[2]);
    std::string line;
    std::getline(list, line);
    const std::vector<std::string> names = Fields(line);

    ODF::COfficeText& body = *letter.Text();
    const auto model = ODF::CloneOf(body); // as it is before the first letter
    while (!body.Children().empty())
        body.Remove(*body.Children().begin());
    ODF::Styles styles(letter);
    int count = 0;
    for (; std::getline(list, line); ++count) {
        const std::vector<std::string> values = Fields(line);
        for (bool isFirst = true; const CSDObject& part : model->Children()) {
            auto made = part.Clone();
            CSDObject& copy = *made;
            body.Append(std::move(made));
            for (std::size_t i = 0; i < names.size() && i < values.size(); ++i)
                ODF::ReplaceText(copy, "$" + names[i], values[i]);
            if (count > 0 && isFirst)
                isFirst = !styles.Format<ODF::CStyleParagraphProperties>(
                    copy, [](auto& paragraph) { paragraph.SetFoBreakBefore(ODF::ST_FoBreakBefore::Page); });
        }
    }
    std::cout << count << " letters\n";
    return letter.Save(argv[3]) ? 0 : 1;
}

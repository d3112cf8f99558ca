// Writes a letter for each line of a list, whose first line has the names of the fields.
// mail_merge LETTER.odt LIST.csv OUT.odt
#include <odfmodel/odfmodel.h>

#include <fstream>
#include <sstream>

std::vector<std::string> Fields(std::istream& list) {
    std::string line;
    std::getline(list, line);
    std::istringstream in(line);
    std::vector<std::string> fields;
    while (std::getline(in, line, ','))
        fields.push_back(line);
    return fields;
}

int main(int argc, char** argv) {
    ODF::Document letter;
    if (argc != 4 || !letter.Open(argv[1]) || !letter.Text()) return 1;
    std::ifstream list(argv[2]);
    const std::vector<std::string> names = Fields(list);
    ODF::COfficeText& body = *letter.Text();
    const auto model = ODF::CloneOf(body); // as it is before the first letter
    while (!body.Children().empty())
        body.Remove(*body.Children().begin());
    ODF::Styles styles(letter);
    while (list.peek() != EOF) {
        const std::vector<std::string> values = Fields(list);
        for (bool isFirst = !body.Children().empty(); const CSDObject& part : model->Children()) {
            auto copy = part.Clone();
            for (std::size_t i = 0; i < names.size() && i < values.size(); ++i)
                ODF::ReplaceText(*copy, "$" + names[i], values[i]);
            if (isFirst)
                isFirst = !styles.Format<ODF::CStyleParagraphProperties>(
                    *copy, [](auto& paragraph) { paragraph.SetFoBreakBefore(ODF::ST_FoBreakBefore::Page); });
            body.Append(std::move(copy));
        }
    }
    return letter.Save(argv[3]) ? 0 : 1;
}

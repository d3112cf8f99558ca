#include "support/package_difference.h"

#include "support/canonical.h"
#include "support/files.h"
#include "support/packages.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <zip.h>

#include <algorithm>
#include <climits>
#include <map>
#include <memory>

namespace test {

namespace {

constexpr const char* kManifest = "META-INF/manifest.xml";

struct Package {
    bool isArchive = false;
    std::vector<std::string> order; ///< names of the members as the archive lists them
    Members members;
};

/// A manifest's row: its attributes by local name.
struct Row {
    std::map<std::string, std::string> attributes;
    bool isEncrypted = false;
};
using Rows = std::map<std::string, Row>;

Package ReadArchive(const std::string& path) {
    Package package;
    const std::unique_ptr<zip_t, decltype(&zip_discard)> archive(zip_open(path.c_str(), ZIP_RDONLY, nullptr),
                                                                 zip_discard);
    if (!archive) return package;
    package.isArchive = true;
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        zip_stat_t about{};
        if (zip_stat_index(archive.get(), index, 0, &about) != 0) continue;
        const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> file(
            zip_fopen_index(archive.get(), index, 0), zip_fclose);
        std::string data(about.size, '\0');
        if (!file || zip_fread(file.get(), data.data(), data.size()) != static_cast<zip_int64_t>(data.size()))
            data = "(unreadable)";
        package.order.emplace_back(about.name);
        package.members[about.name] = std::move(data);
    }
    return package;
}

std::string ToText(const xmlChar* text) {
    return text ? reinterpret_cast<const char*>(text) : "";
}

Rows RowsOf(const Package& package) {
    Rows rows;
    const auto manifest = package.members.find(kManifest);
    if (manifest == package.members.end() || manifest->second.size() > INT_MAX) return rows;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(manifest->second.data(), static_cast<int>(manifest->second.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    const xmlNode* const root = document ? xmlDocGetRootElement(document.get()) : nullptr;
    for (xmlNode* entry = root ? xmlFirstElementChild(xmlDocGetRootElement(document.get())) : nullptr; entry;
         entry = xmlNextElementSibling(entry)) {
        Row row;
        for (const xmlAttr* attribute = entry->properties; attribute; attribute = attribute->next) {
            const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
                xmlNodeListGetString(document.get(), attribute->children, 1), xmlFree);
            row.attributes[ToText(attribute->name)] = ToText(value.get());
        }
        row.isEncrypted = xmlFirstElementChild(entry) != nullptr;
        rows[row.attributes["full-path"]] = row;
    }
    return rows;
}

void CompareManifests(const Package& before, const Package& after, std::vector<std::string>& out) {
    const Rows rows = RowsOf(before);
    const Rows others = RowsOf(after);
    const auto report = [&](const std::string& path, const std::string& what) {
        out.push_back(std::string(kManifest) + ": \"" + path + "\": " + what);
    };
    for (const auto& [path, row] : rows) {
        const auto found = others.find(path);
        if (found == others.end()) {
            report(path, "lost");
            continue;
        }
        if (row.isEncrypted != found->second.isEncrypted)
            report(path, row.isEncrypted ? "no longer encrypted" : "encrypted");
        for (const auto& [name, value] : row.attributes) {
            const auto other = found->second.attributes.find(name);
            const bool mayDiffer = value.empty() || (name == "size" && row.isEncrypted);
            if (other == found->second.attributes.end())
                report(path, name + " lost");
            else if (other->second != value && !mayDiffer)
                report(path, name + " \"" + value + "\" before, \"" + other->second + "\" after");
        }
    }
    for (const auto& [path, row] : others)
        if (!rows.contains(path) && path != "/" && !after.members.contains(path))
            report(path, "added, but no member");
}

/// The order of the members that both packages have, but for those that have places of their own.
std::vector<std::string> CommonOrder(const Package& package, const Package& other) {
    std::vector<std::string> order = package.order;
    std::erase_if(order, [&](const std::string& name) {
        return name == "mimetype" || name == kManifest || !other.members.contains(name);
    });
    return order;
}

bool IsXml(const std::string& name) {
    return name.ends_with(".xml") || name.ends_with(".rdf");
}

} // namespace

std::vector<std::string> PackageDifferences(const std::string& before, const std::string& after,
                                            const std::string& password) {
    Package first = ReadArchive(before);
    Package second = ReadArchive(after);
    if (!first.isArchive && !second.isArchive) return CanonicalDifferences(ReadFile(before), ReadFile(after));
    if (!first.isArchive || !second.isArchive) return {"only one of the two is an archive"};
    if (!password.empty()) {
        first.members = ReadPackage(before, password);
        second.members = ReadPackage(after, password);
    }

    std::vector<std::string> differences;
    for (const auto& [name, data] : first.members) {
        const auto other = second.members.find(name);
        if (other == second.members.end())
            differences.push_back(name + ": lost");
        else if (data == other->second || name == kManifest)
            continue;
        else if (!IsXml(name))
            differences.push_back(name + ": other bytes");
        else
            for (const std::string& difference : CanonicalDifferences(data, other->second))
                differences.push_back(name + ": " + difference);
    }
    for (const auto& [name, data] : second.members)
        if (!first.members.contains(name) && name != "mimetype" && name != kManifest)
            differences.push_back(name + ": added");
    if (CommonOrder(first, second) != CommonOrder(second, first))
        differences.emplace_back("the members are in another order");
    CompareManifests(first, second, differences);
    return differences;
}

} // namespace test

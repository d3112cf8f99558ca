#include "check/manifest_rows.h"

#include "check/xml_events.h"

namespace command {
namespace {

std::string LocalPart(const std::string& name) {
    return name.substr(name.find_last_of(":}") + 1); // npos + 1 is 0
}

} // namespace

ManifestRows ReadManifestRows(std::string_view xml, std::string& fault) {
    ManifestRows rows;
    if (xml.empty()) return rows; // none
    NamePool names;
    XmlEvents events(names, Pieces(xml));
    for (const XmlEvent* event = events.peek(); event; events.pop(), event = events.peek()) {
        if (event->kind != XmlEvent::Kind::Start) continue;
        const std::string element = LocalPart(*event->name);
        if (element != "manifest" && element != "file-entry") continue;
        ManifestRow row;
        for (const XmlAttribute& attribute : event->attributes)
            row.emplace(LocalPart(*attribute.name), attribute.value);
        row.erase("size");
        const auto path = row.find("full-path");
        rows[path == row.end() ? std::string(kWholeManifest) : path->second].push_back(row);
    }
    fault = events.fault();
    return rows;
}

} // namespace command

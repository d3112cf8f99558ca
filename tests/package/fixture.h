#pragma once

#include "support/files.h"
#include "support/packages.h"
#include "support/workspace.h"
#include "zip/items.h"
#include "zip/notes.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/package/package.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace package_test {

namespace fs = std::filesystem;

using test::HasNote;
using test::Members;
using test::ReadFile;
using test::ReadMembers;
using test::ReadPackage;
using test::ScopedVariable;
using test::WritePackage;

inline std::string Utf8(const unsigned short* text) {
    return text ? ODF::ToUtf8(text) : "(null)";
}

/// Writes a file with its missing folders.
inline void WriteFile(const fs::path& path, std::string_view data) {
    fs::create_directories(path.parent_path());
    test::WriteFile(path, data);
}

inline std::vector<std::string> Names(const Members& members) {
    std::vector<std::string> names;
    for (const auto& [name, data] : members)
        names.push_back(name);
    return names;
}

inline std::vector<std::string> NamesInOrder(const std::string& path) {
    CSDUnZip unzip;
    EXPECT_NE(unzip.OpenForItems(path), 0);
    return test::NamesInOrder(unzip);
}

inline std::string Manifest(std::string_view entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
           "<manifest:manifest xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">" +
           std::string(entries) + "</manifest:manifest>";
}

inline std::string Entry(std::string_view mediaType, std::string_view fullPath) {
    return "<manifest:file-entry manifest:media-type=\"" + std::string(mediaType) +
           "\" manifest:full-path=\"" + std::string(fullPath) + "\"/>";
}

inline constexpr const char* kTextType = "application/vnd.oasis.opendocument.text";
inline constexpr const char* kPresentationType =
    "application/vnd.openxmlformats-officedocument.presentationml.presentation.main+xml";
inline constexpr const char* kOfficeRelation =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";

inline std::string ContentTypes(std::string_view entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
           "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">" +
           std::string(entries) + "</Types>";
}

inline std::string Default(std::string_view extension, std::string_view type) {
    return "<Default Extension=\"" + std::string(extension) + "\" ContentType=\"" + std::string(type) +
           "\"/>";
}

inline std::string Override(std::string_view partName, std::string_view type) {
    return "<Override PartName=\"" + std::string(partName) + "\" ContentType=\"" + std::string(type) + "\"/>";
}

inline std::string Relationships(std::string_view entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
           "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" +
           std::string(entries) + "</Relationships>";
}

inline std::string Relationship(std::string_view id, std::string_view type, std::string_view target,
                                std::string_view rest = {}) {
    return "<Relationship Id=\"" + std::string(id) + "\" Type=\"" + std::string(type) + "\" Target=\"" +
           std::string(target) + "\" " + std::string(rest) + "/>";
}

/// Packages in a folder of the test's own. Nothing may be left in the temporary directory.
class PackageTest : public test::InWorkspace<> {
protected:
    fs::path at(std::string_view name) const { return file(name); }
    std::string text(std::string_view name) const { return file(name); }
    static fs::path temporary() { return std::getenv("TMPDIR"); }

    /// A package that notes into `diagnostics_`.
    std::unique_ptr<SDPackage::IPackage> newPackage() {
        std::unique_ptr<SDPackage::IPackage> package(SDPackage::CreatePackage());
        diagnostics_.clear();
        package->SetDiagnostics(&diagnostics_);
        return package;
    }

    /// The same, with a file in it.
    std::unique_ptr<SDPackage::IPackage> opened(const std::string& path) {
        auto package = newPackage();
        EXPECT_NE(package->Open(path), 0) << path;
        return package;
    }

    /// What a save of the package writes.
    Members saved(SDPackage::IPackage& package, std::string_view name) const {
        EXPECT_NE(package.Save(text(name)), 0) << name;
        return ReadPackage(text(name));
    }

    /// A text document with a picture, an embedded object and a member that the manifest doesn't list.
    std::string makeText(std::string_view name = "a.odt") const {
        WritePackage(text(name), {{"mimetype", kTextType},
                                  {"content.xml", "<content/>"},
                                  {"styles.xml", "<styles/>"},
                                  {"Pictures/a.png", "picture bytes"},
                                  {"Object 1/content.xml", "<math/>"},
                                  {"unlisted.bin", "?"},
                                  {"META-INF/manifest.xml",
                                   Manifest(Entry(kTextType, "/") + Entry("text/xml", "content.xml") +
                                            Entry("text/xml", "styles.xml") +
                                            Entry("image/png", "Pictures/a.png") + Entry("", "Pictures/") +
                                            Entry("application/vnd.oasis.opendocument.formula", "Object 1/") +
                                            Entry("text/xml", "Object 1/content.xml") +
                                            Entry("text/xml", "missing.xml"))}});
        return text(name);
    }

    std::string makePresentation() const {
        WritePackage(text("a.pptx"), presentationMembers());
        return text("a.pptx");
    }

    /// A presentation with one slide, a picture and a link to the outside.
    static Members presentationMembers() {
        const std::string relation = kOfficeRelation;
        return {{"[Content_Types].xml",
                 ContentTypes(Default("xml", "application/xml") + Default("png", "image/png") +
                              Override("/ppt/presentation.xml", kPresentationType))},
                {"_rels/.rels",
                 Relationships(Relationship("rId1", relation + "officeDocument", "ppt/presentation.xml"))},
                {"ppt/presentation.xml", "<presentation/>"},
                {"ppt/_rels/presentation.xml.rels",
                 Relationships(Relationship("rId1", relation + "slide", "slides/slide1.xml") +
                               Relationship("rId2", relation + "hyperlink", "http://host/a b?x=1&amp;y=2",
                                            "TargetMode=\"External\""))},
                {"ppt/slides/slide1.xml", "<slide/>"},
                {"ppt/slides/_rels/slide1.xml.rels",
                 Relationships(Relationship("rId1", relation + "image", "../media/image1.png"))},
                {"ppt/media/image1.png", "picture"}};
    }

    ODF::Diagnostics diagnostics_;
};

} // namespace package_test

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

class CSDObject;
struct _xmlDoc;

namespace pugi {
class xml_document;
} // namespace pugi

#include <odfmodel/core/fidelity.h>

namespace ODF {
class Diagnostics;
} // namespace ODF

namespace bench {

// One tree model each, with the same operations: `prepare` what isn't part of the parse, `build` the tree
// from XML in memory, `write` it to a file, `clear` it. Building and clearing leave nothing but the tree
// behind.

/// This library.
class OdfModel {
public:
    static constexpr std::string_view kName = "odfmodel";
    explicit OdfModel(ODF::Fidelity fidelity = ODF::Fidelity::Listed);
    ~OdfModel();
    void prepare(const std::string&) {}
    bool build(const std::string& xml, ODF::Diagnostics* diagnostics = nullptr);
    bool write(const std::string& path);
    void clear();

private:
    const ODF::Fidelity fidelity_;
    CSDObject* root_ = nullptr;
};

/// The same with everything that a file has.
class WholeOdfModel : public OdfModel {
public:
    static constexpr std::string_view kName = "odfmodel_everything";
    WholeOdfModel() : OdfModel(ODF::Fidelity::Everything) {}
};

/// libxml2's DOM, with short texts held in their nodes (XML_PARSE_COMPACT), which is its smallest and
/// quickest form.
class Libxml2Model {
public:
    static constexpr std::string_view kName = "libxml2";
    ~Libxml2Model();
    void prepare(const std::string&) {}
    bool build(const std::string& xml);
    bool write(const std::string& path);
    void clear();

private:
    _xmlDoc* document_ = nullptr;
};

/// pugixml, from a buffer that it copies.
class PugiModel {
public:
    static constexpr std::string_view kName = "pugixml";
    PugiModel();
    ~PugiModel();
    void prepare(const std::string&) {}
    bool build(const std::string& xml);
    bool write(const std::string& path);
    void clear();

protected:
    std::unique_ptr<pugi::xml_document> document_;
};

/// pugixml, from a buffer that becomes a part of the tree. The copy that it needs is made before the parse.
class PugiInPlaceModel : public PugiModel {
public:
    static constexpr std::string_view kName = "pugixml_inplace";
    void prepare(const std::string& xml);
    bool build(const std::string& xml);
    void clear();

private:
    std::unique_ptr<char[]> buffer_;
};

/// libexpat with handlers that count: the least that a parse costs. There is no tree.
class ExpatModel {
public:
    static constexpr std::string_view kName = "expat";
    void prepare(const std::string&) {}
    bool build(const std::string& xml);
    void clear() {}
    std::size_t elements() const { return elements_; }
    std::size_t attributes() const { return attributes_; }

private:
    std::size_t elements_ = 0;
    std::size_t attributes_ = 0;
};

/// Bytes of the heap in use, with the allocator's own overhead.
std::size_t AllocatedBytes();
/// Bytes of memory that the process occupies, files apart: what a tree costs, however it got them.
std::size_t ResidentBytes();
/// Gives free memory back to the system, so that each build pays for its pages as in a fresh process.
void ReturnFreeMemory();

} // namespace bench

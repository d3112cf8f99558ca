#pragma once

#include <odfmodel/package/part.h>
#include <odfmodel/package/types.h>

#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>

namespace SDPackage {

/// What a part was when its package was opened.
struct PartOrigin {
    CTulStringW path;
    CTulStringW relationType;
    CTulStringW contentType;
    TargetMode mode = TargetModeInternal;
    CTulStringW member;    ///< its name in the archive; empty for an external part
    bool isIsland = false; ///< no chain of links led to it from the root
};

/// The parts and relationship sets of one package, and who owns them. A part that is deleted by a client
/// takes itself out of here, so that nothing points to it any more.
class PartRegistry {
public:
    using RelationshipSets = std::map<CTulStringW, std::unique_ptr<IRelationships>>;

    PartRegistry();
    PartRegistry(const PartRegistry&) = delete;
    PartRegistry& operator=(const PartRegistry&) = delete;
    ~PartRegistry();

    PartMap& parts() noexcept { return parts_; }
    IPart& root() noexcept { return *root_; }

    /// Takes `part` over and enters it under its package path unless that is taken, ignoring case. True when
    /// it was entered.
    bool add(IPart* part);
    IPart* find(const CTulStringW& packagePath) const;
    /// The first part in name order with that mode and local path, ignoring case. A walk up to 128 parts, a
    /// lookup in an index from then on.
    IPart* findByLocalPath(const CTulStringW& localPath, TargetMode mode);

    /// Null when the source has a set already.
    IRelationships* createRelationships(const CTulStringW& source);
    IRelationships* relationships(const CTulStringW& source) const;
    const RelationshipSets& relationshipSets() const noexcept { return sets_; }

    /// Remembers that the archive never held a member for this part.
    void markAbsent(const IPart& part) { absent_.insert(&part); }
    bool isAbsent(const IPart& part) const { return absent_.contains(&part); }

    /// Remembers how the file had this part.
    void setOrigin(const IPart& part, PartOrigin origin) { origins_[&part] = std::move(origin); }
    /// Null for a part that didn't come from the file, or isn't in its place any more.
    const PartOrigin* origin(const IPart& part) const;
    /// All parts that came from the file and are still there.
    const std::unordered_map<const IPart*, PartOrigin>& origins() const noexcept { return origins_; }
    void setIsland(const IPart& part) { origins_[&part].isIsland = true; }
    /// Every part of this package, listed or only owned.
    template<typename Visit>
    void forEach(Visit visit) const {
        for (const auto& [part, path] : owned_)
            visit(*part);
    }

    /// Starts over: no part is listed, no set is left and the root is empty. The old parts live on until the
    /// end, as clients may hold them.
    void reset();

    /// Takes a part out for good; called by its destructor.
    void forget(IPart* part) noexcept;
    /// Around a change of a part's local path or target mode: `unindex` tells whether `index` has to follow.
    bool unindex(IPart* part);
    void index(IPart* part);

private:
    struct PlaceLess {
        using Place = std::pair<TargetMode, CTulStringW>;
        bool operator()(const Place& a, const Place& b) const noexcept;
    };
    using PartIndex = std::multimap<PlaceLess::Place, IPart*, PlaceLess>;

    void dropRelationships();
    PartIndex::iterator findInIndex(IPart* part);

    std::unique_ptr<IPart> root_;
    PartMap parts_;
    /// Every part of this package with the path under which it was entered.
    std::unordered_map<IPart*, CTulStringW> owned_;
    RelationshipSets sets_;
    std::unordered_set<const IPart*> absent_;
    std::unordered_map<const IPart*, PartOrigin> origins_;
    std::unique_ptr<PartIndex> index_;
};

} // namespace SDPackage

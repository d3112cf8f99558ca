// Two ways to hold the attribute values of an element, on the elements of the generated documents: the sparse
// block that the library uses, and one word in the object for each attribute that its class may have.
#include "benchmarks.h"
#include "models.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/office/document.h>

#include <benchmark/benchmark.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <unordered_map>
#include <vector>

namespace bench {
namespace {

/// What one element of a document has: how many attributes its class lists, and the rows of those that it
/// bears.
struct Element {
    std::uint16_t possible;
    std::uint16_t present;
    std::uint32_t firstRow; ///< in `Elements::rows`
};

struct Elements {
    std::vector<Element> all;
    std::vector<std::uint16_t> rows;
};

class ElementCollector {
public:
    Elements collect(CSDObject& root) {
        Elements result;
        std::vector<CSDObject*> open{&root};
        while (!open.empty()) {
            CSDObject& object = *open.back();
            open.pop_back();
            if (const auto info = ODF::ClassOf(object)) add(result, object, *info);
            if (const auto* const children = object.GetObjectList())
                open.insert(open.end(), children->begin(), children->end());
        }
        return result;
    }

private:
    using RowsByName = std::unordered_map<std::string_view, std::uint16_t>;

    void add(Elements& result, const CSDObject& object, const ODF::ClassInfo& info) {
        RowsByName& rows = classes_[info.id()];
        if (rows.empty())
            for (const ODF::AttributeInfo& attribute : info.attributes())
                rows.emplace(attribute.name, static_cast<std::uint16_t>(rows.size()));
        Element element{static_cast<std::uint16_t>(rows.size()), 0,
                        static_cast<std::uint32_t>(result.rows.size())};
        for (const ODF::AttributeText& attribute : ODF::AttributesOf(object)) {
            result.rows.push_back(rows.at(attribute.name));
            ++element.present;
        }
        result.all.push_back(element);
    }

    std::unordered_map<unsigned, RowsByName> classes_;
};

/// What an element object holds besides its attribute values: virtual table, id and flags, part, children.
struct Base {
    std::uint64_t words[6] = {};
};

struct Sparse {
    struct Object {
        Base base;
        std::uint64_t* block = nullptr;
    };
    static Object* make(const Element& element, const std::uint16_t* rows) {
        auto* const object = new (std::malloc(sizeof(Object))) Object;
        if (element.present == 0) return object;
        const unsigned words = element.possible / 64U + 1U;
        object->block =
            static_cast<std::uint64_t*>(std::calloc(words + element.present, sizeof(std::uint64_t)));
        for (unsigned i = 0; i < element.present; ++i) {
            object->block[rows[i] / 64] |= std::uint64_t{1} << (rows[i] % 64);
            object->block[words + i] = rows[i] + 1U;
        }
        return object;
    }
    static void destroy(Object* object) {
        std::free(object->block);
        std::free(object);
    }
    static std::uint64_t get(const Object& object, const Element& element, unsigned row) {
        const std::uint64_t* const block = object.block;
        if (!block || !(block[row / 64] >> (row % 64) & 1U)) return 0;
        int rank = 0;
        for (unsigned word = 0; word < row / 64; ++word)
            rank += std::popcount(block[word]);
        rank += std::popcount(block[row / 64] & ((std::uint64_t{1} << (row % 64)) - 1));
        return block[element.possible / 64U + 1U + static_cast<unsigned>(rank)];
    }
    template<typename Visit>
    static void visit(const Object& object, const Element& element, Visit visitValue) {
        if (!object.block) return;
        const unsigned words = element.possible / 64U + 1U;
        const std::uint64_t* slot = object.block + words;
        for (unsigned word = 0; word < words; ++word)
            for (std::uint64_t bits = object.block[word]; bits != 0; bits &= bits - 1)
                visitValue(word * 64 + static_cast<unsigned>(std::countr_zero(bits)), *slot++);
    }
};

struct Flat {
    struct Object {
        Base base;
        std::uint64_t values[1]; ///< as many as the class lists
    };
    static Object* make(const Element& element, const std::uint16_t* rows) {
        auto* const object =
            new (std::calloc(1, sizeof(Base) + element.possible * sizeof(std::uint64_t))) Base;
        auto* const values = reinterpret_cast<std::uint64_t*>(object + 1);
        for (unsigned i = 0; i < element.present; ++i)
            values[rows[i]] = rows[i] + 1U;
        return reinterpret_cast<Object*>(object);
    }
    static void destroy(Object* object) { std::free(object); }
    static std::uint64_t get(const Object& object, const Element&, unsigned row) {
        return object.values[row];
    }
    template<typename Visit>
    static void visit(const Object& object, const Element& element, Visit visitValue) {
        for (unsigned row = 0; row < element.possible; ++row)
            if (object.values[row] != 0) visitValue(row, object.values[row]);
    }
};

/// The elements of the samples, collected once.
class ElementLists {
public:
    explicit ElementLists(Samples& samples) : samples_(samples) {}
    const Elements& get(const std::string& name) {
        auto& known = lists_[name];
        if (!known) {
            const std::unique_ptr<CSDObject> root(ODF::COfficeDocumentContent::Create());
            ODF::FromXml(samples_.get(name).xml, *root);
            known = std::make_unique<Elements>(ElementCollector().collect(*root));
        }
        return *known;
    }

private:
    Samples& samples_;
    std::unordered_map<std::string, std::unique_ptr<Elements>> lists_;
};

/// One iteration makes all objects, reads each value that is present and the first and last that may be,
/// visits all values as writing does, and destroys the objects; the counters tell the nanoseconds an element
/// for each.
template<typename Store>
void Storage(benchmark::State& state, const Elements& elements) {
    using Clock = std::chrono::steady_clock;
    using Object = typename Store::Object;
    std::vector<Object*> objects(elements.all.size());
    std::size_t bytes = 0;
    double times[4] = {};
    const auto eachElement = [&](double& time, auto call) {
        const auto start = Clock::now();
        for (std::size_t i = 0; i < objects.size(); ++i)
            call(elements.all[i], objects[i]);
        time += std::chrono::duration<double, std::nano>(Clock::now() - start).count();
    };
    for ([[maybe_unused]] auto unused : state) {
        ReturnFreeMemory();
        const std::size_t before = AllocatedBytes();
        eachElement(times[0], [&](const Element& element, Object*& object) {
            object = Store::make(element, elements.rows.data() + element.firstRow);
        });
        bytes = AllocatedBytes() - before;
        std::uint64_t sum = 0;
        eachElement(times[1], [&](const Element& element, const Object* object) {
            for (unsigned i = 0; i < element.present; ++i)
                sum += Store::get(*object, element, elements.rows[element.firstRow + i]);
            if (element.possible > 0)
                sum += Store::get(*object, element, 0) + Store::get(*object, element, element.possible - 1U);
        });
        eachElement(times[2], [&](const Element& element, const Object* object) {
            Store::visit(*object, element, [&](unsigned row, std::uint64_t value) { sum += row + value; });
        });
        benchmark::DoNotOptimize(sum);
        eachElement(times[3], [&](const Element&, Object* object) { Store::destroy(object); });
    }
    constexpr const char* kNames[] = {"make_ns", "get_ns", "visit_ns", "destroy_ns"};
    const auto count = static_cast<double>(objects.size());
    for (std::size_t i = 0; i < std::size(kNames); ++i)
        state.counters[kNames[i]] = times[i] / count / static_cast<double>(state.iterations());
    state.counters[kBytesPerElement] = static_cast<double>(bytes) / count;
}

} // namespace

void RegisterStorage(Samples& samples) {
    const auto lists = std::make_shared<ElementLists>(samples);
    for (const std::string_view view : Samples::kNames) {
        const std::string name(view);
        const auto add = [&](std::string_view store, auto call) {
            benchmark::RegisterBenchmark(
                BenchmarkName("storage", store, name).c_str(),
                [lists, name, call](benchmark::State& state) { call(state, lists->get(name)); })
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        };
        add("sparse",
            [](benchmark::State& state, const Elements& elements) { Storage<Sparse>(state, elements); });
        add("flat",
            [](benchmark::State& state, const Elements& elements) { Storage<Flat>(state, elements); });
    }
}

} // namespace bench

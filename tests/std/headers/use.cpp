// Uses what <kelvofxds/std.h> offers, before anything else is included. It is compiled in each
// version of the language, by each compiler, and with what hosts turn off.
#include <kelvofxds/std.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <unordered_map>
#include <utility>
#include <vector>
#if __cplusplus >= 202002L
#include <concepts>
#include <ranges>
#include <span>
#endif

namespace {
template <class Range>
using IteratorOf = decltype(begin(std::declval<Range&>()));
template <class Range>
using CategoryOf = typename std::iterator_traits<IteratorOf<Range>>::iterator_category;
template <class Range, class Category>
constexpr bool is = std::is_same_v<CategoryOf<Range>, Category>&&
    std::is_same_v<IteratorOf<Range>, decltype(end(std::declval<Range&>()))>;

static_assert(is<fxStr, std::random_access_iterator_tag>);
static_assert(is<const fxStr, std::random_access_iterator_tag>);
static_assert(is<fxIntArray, std::random_access_iterator_tag>);
static_assert(is<const fxStrArray, std::random_access_iterator_tag>);
static_assert(is<fxStrStrDictionary, std::input_iterator_tag>);
static_assert(is<const fxVoidPtrDict, std::input_iterator_tag>);
static_assert(is<fxStrSet, std::input_iterator_tag>);
static_assert(is<GenericList, std::input_iterator_tag>);
static_assert(is<fxIndexableList, std::input_iterator_tag>);
static_assert(is<NameSpace, std::input_iterator_tag>);

#if __cplusplus >= 202002L
template <class Range>
constexpr bool isContiguous = std::ranges::contiguous_range<Range>&&
    std::ranges::sized_range<Range>&& std::ranges::common_range<Range>;
template <class Range>
constexpr bool isInput = std::ranges::input_range<Range>&& std::ranges::common_range<Range>;

static_assert(isContiguous<fxStr> && isContiguous<const fxStr>);
static_assert(isContiguous<fxIntArray> && isContiguous<const fxIntArray>);
static_assert(isContiguous<fxBoolArray> && isContiguous<fxVoidPtrArray>);
static_assert(isContiguous<fxStrArray> && isContiguous<const fxStrArray>);
static_assert(isContiguous<fxArrayOf<int>>);
static_assert(isInput<fxStrStrDictionary> && isInput<const fxStrStrDictionary>);
static_assert(isInput<fxVoidPtrDict> && isInput<const fxVoidPtrDict>);
static_assert(isInput<fxStrSet> && isInput<const fxStrSet>);
static_assert(isInput<fxEntryRange<fxStr, fxStr>> && isInput<fxKeyRange<fxStr>>);
static_assert(isInput<GenericList> && isInput<fxIndexableList> && isInput<NameSpace>);
static_assert(isInput<fxItemRange<int, GenericNode>>);
static_assert(std::totally_ordered<fxRef<fxRCObj>>);

int rangesAreUsed() {
    auto a = fxMake<fxIntArray>({3, 1, 2});
    std::ranges::sort(a);
    const std::span<const int> view(a);
    fxStrStrDictionary d;
    fxAddAll(d, {{"a", "b"}});
    return view[0] + static_cast<int>(std::ranges::distance(d)) +
           static_cast<int>(
               std::ranges::count_if(d, [](const auto& entry) { return entry.second == "b"; }));
}
#else
int rangesAreUsed() { return 3; }
#endif

template <class Container>
int countOf(const Container& container) {
    int n = 0;
    for (const auto& element : container) {
        (void)element;
        ++n;
    }
    return n;
}

int walkAndPrint() {
    fxStrStrDictionary d, copy;
    fxVoidPtrDict pointers;
    fxStrSet set, same;
    fxAddAll(d, {{"a", "b"}, {"c", std::string("d")}});
    fxAddAll(pointers, {{"d", &d}});
    fxAddAll(set, {"a", "b"});
    fxCopyInto(d, copy);
    fxCopyInto(set, same);
    for (auto& [key, value] : d)
        value.append(key.c_str());
    std::ostringstream out;
    out << d << set << pointers << fxMake<fxStrArray>({"x"}) << fxMake<fxBoolArray>({true});
    const bool found = contains(d, "a") && contains(set, "b") && contains(pointers, "d") &&
                       value_or(d, "a", "?") == "ba" && value_or(pointers, "d", &copy) != &copy;
    return countOf(d) + countOf(copy) + countOf(set) + countOf(same) + countOf(pointers) +
           (found ? 0 : 100);
}

int fillAndSort() {
    auto numbers = fxMake<fxDoubleArray>({2, 1});
    fxAppend(numbers, 0.5);
    fxSort(numbers);
    auto texts = fxMake<fxStrArray>({"b", "a"});
    fxAppend(texts, std::string_view("c"));
    fxSort(texts, [](const fxStr& a, const fxStr& b) { return b < a; });
    auto own = fxMake<fxArrayOf<std::string>>(std::vector<std::string>{"q", "p"});
    fxSort(own);
    std::unordered_map<fxStr, fxRef<fxRCObj>> objects;
    objects[fxStrOf(fxString(texts[0U]))] = new fxRCObj;
    return countOf(numbers) + countOf(texts) + countOf(own) + countOf(objects) +
           static_cast<int>(std::count(begin(texts[0U]), end(texts[0U]), 'c'));
}

int visit() {
    GenericList list;
    fxIndexableList links;
    HashTable table;
    NameSpace names(nullptr, 0);
    names.makeAtom("name", 1);
    table.add(1, &list);
    list.append(&table);
    int visited = countOf(list) + countOf(links) + countOf(fxItems<HashTable>(list));
    fxForEach(table, [&visited](HashEntry&) { ++visited; });
    for (const auto& [atom, name] : names)
        visited += static_cast<int>(atom) + (*name == 'n' ? 1 : 0);
    return visited;
}
}  // namespace

int main() {
    const int sum = rangesAreUsed() + walkAndPrint() + fillAndSort() + visit();
    return sum == 3 + 9 + 10 + 5 ? 0 : sum;
}

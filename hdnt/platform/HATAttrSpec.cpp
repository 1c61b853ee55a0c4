#include "hdnt/platform/HATAttrSpec.h"

#include "hdnt/platform/AttrSpecDraft.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/SlabMemory.internal.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <climits>
#include <cstring>
#include <type_traits>
#include <utility>

static_assert(sizeof(void*) == sizeof(std::uint64_t), "a slot holds a pointer");

namespace {

std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }
std::uint64_t bitsOf(const void* token) { return reinterpret_cast<std::uintptr_t>(token); }
const void* tokenOf(std::uint64_t slot) { return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(slot)); }
void release(std::uint64_t slot) { HSTUniqString::adopt(tokenOf(slot)); }

template <typename T>
T decode(std::uint64_t slot) {
    if constexpr (std::is_same_v<T, int>) return static_cast<int>(static_cast<std::uint32_t>(slot));
    else if constexpr (std::is_same_v<T, double>) return std::bit_cast<double>(slot);
    else return HSTUniqString::textOf(tokenOf(slot));
}

// The capacity follows from the count, so none is stored; large arrays grow by a quarter.
std::size_t capacityFor(std::size_t count) {
    if (count <= 9) return count;
    const auto step = std::bit_width(count) - 3;
    return ((((count - 1) >> step) + 1) << step) + 1;
}

std::uint64_t* allocateSlots(std::size_t capacity) {
    if (capacity == 0) return nullptr;
    return static_cast<std::uint64_t*>(hdnt::platform::allocateObject(capacity * sizeof(std::uint64_t)));
}

void freeSlots(std::uint64_t* slots, std::size_t capacity) {
    if (slots) hdnt::platform::freeObject(slots, capacity * sizeof(std::uint64_t));
}

} // namespace

template <typename T>
HATValueIter<T>::~HATValueIter() = default;

template <typename T>
void HATValueIter<T>::next() {
    if (!hasNext()) throw HEXAlgException("HATValueIter::next called on iterator with no next value");
    current_ = next_++;
}

template <typename T>
T HATValueIter<T>::current() const {
    if (!current_) throw HEXAlgException("HATValueIter::current called on iterator with no current value");
    return decode<T>(*current_);
}

template class HATValueIter<int>;
template class HATValueIter<double>;
template class HATValueIter<const std::string&>;

// The standard library's is a call on every processor that need not have an instruction for it.
static constexpr std::size_t bitsIn(std::uint32_t word) {
    word -= word >> 1 & 0x55555555;
    word = (word & 0x33333333) + (word >> 2 & 0x33333333);
    return ((word + (word >> 4)) & 0x0f0f0f0f) * 0x01010101 >> 24;
}
static_assert(bitsIn(0) == 0 && bitsIn(0x80010110) == 4 && bitsIn(~0U) == 32);

HATAttrSpec::HATAttrSpec(HATAttrTypes::AttrType type, int kind)
    : type_(static_cast<std::uint8_t>(type)), kind_(static_cast<std::uint8_t>(kind)) {
    static_assert(NumFacets <= 32);
}

HATAttrSpec::~HATAttrSpec() {
    for (unsigned facet = FirstText; facet < FirstList; ++facet)
        if (has(facet)) release(slots_[indexOf(facet)]);
    if (present_ >> FirstTextList != 0)
        for (std::size_t i = listBegin(FirstTextList), end = numSlots(); i < end; ++i) release(slots_[i]);
    freeSlots(slots_, capacityFor(numSlots()));
}

std::size_t HATAttrSpec::indexOf(unsigned facet) const { return bitsIn(present_ & ((1U << facet) - 1)); }

std::size_t HATAttrSpec::listBegin(unsigned list) const {
    std::size_t begin = bitsIn(present_);
    for (unsigned earlier = FirstList; earlier < list; ++earlier) begin += listLength(earlier);
    return begin;
}

void HATAttrSpec::insertSlots(std::size_t index, std::initializer_list<std::uint64_t> values) {
    const std::size_t count = numSlots();
    if (const std::size_t capacity = capacityFor(count + values.size()), old = capacityFor(count); capacity != old) {
        std::uint64_t* const grown = allocateSlots(capacity);
        std::copy_n(slots_, count, grown);
        freeSlots(std::exchange(slots_, grown), old);
    }
    std::memmove(slots_ + index + values.size(), slots_ + index, (count - index) * sizeof *slots_);
    std::copy(values.begin(), values.end(), slots_ + index);
}

// A facet once set keeps its slot, also when it is set back: realloc to a smaller size is not worth its code.
void HATAttrSpec::put(Facet facet, std::uint64_t value, std::uint64_t absent) {
    if (has(facet)) {
        slots_[indexOf(facet)] = value;
    } else if (value != absent) {
        insertSlots(indexOf(facet), {value});
        present_ |= 1U << facet;
    }
}

void HATAttrSpec::append(Facet list, std::uint64_t value) {
    if (!has(list)) {
        insertSlots(indexOf(list), {0});
        present_ |= 1U << list;
    }
    insertSlots(listBegin(list) + listLength(list), {value});
    ++slots_[indexOf(list)];
}

const std::string& HATAttrSpec::text(Facet facet) const { return HSTUniqString::textOf(tokenOf(get(facet, 0))); }

void HATAttrSpec::putText(Facet facet, HSTUniqString value) {
    const std::uint64_t old = get(facet, 0);
    put(facet, bitsOf(value.id()), 0);
    value.detach();
    release(old);
}

HATOwnText HATAttrSpec::exchangeDescription(std::string_view text) {
    return std::exchange(description_, HATOwnText(text));
}

void HATAttrSpec::appendText(Facet list, HSTUniqString value) {
    append(list, bitsOf(value.id()));
    value.detach();
}

template <typename T>
HATValueIter<T>* HATAttrSpec::makeIter(Facet list) const {
    if (!has(list)) return new HATValueIter<T>(nullptr, nullptr);
    const std::uint64_t* begin = slots_ + listBegin(list);
    return new HATValueIter<T>(begin, begin + listLength(list));
}

template HATIntIter* HATAttrSpec::makeIter<int>(Facet) const;
template HATDoubleIter* HATAttrSpec::makeIter<double>(Facet) const;
template HATTextIter* HATAttrSpec::makeIter<const std::string&>(Facet) const;

bool HATAttrSpec::isEnumerated() const {
    switch (getAttrType()) {
    case HATAttrTypes::TypeInt: return flag(DiscreteInt) || has(IntList);
    case HATAttrTypes::TypeDouble: return flag(DiscreteDouble) || has(DoubleList);
    case HATAttrTypes::TypeString: return has(StringList);
    case HATAttrTypes::TypeBitHex: return has(HexList);
    case HATAttrTypes::TypeBitBinary: return has(BinaryList);
    default: return false;
    }
}

void HATAttrSpec::removeAllowedSourceType(int sourceType) {
    if (sourceType < 0 || sourceType >= HATSrcInfo::NumSourceTypes) return;
    put(RemovedSources, get(RemovedSources, 0) | 1ULL << sourceType, 0);
}

bool HATAttrSpec::isAllowedSourceType(int sourceType) const {
    if (sourceType < 0 || sourceType >= HATSrcInfo::NumSourceTypes) return false;
    return (get(RemovedSources, 0) >> sourceType & 1U) == 0;
}

void HATAttrSpec::setIntRange(int low, int high) { put(IntRange, pack(low, high), pack(INT_MIN, INT_MAX)); }
int HATAttrSpec::getLowIntRange() const { return first(get(IntRange, pack(INT_MIN, INT_MAX))); }
int HATAttrSpec::getHighIntRange() const { return second(get(IntRange, pack(INT_MIN, INT_MAX))); }

void HATAttrSpec::setDoubleRange(double low, double high) {
    put(DoubleLow, bitsOf(low), bitsOf(-DBL_MAX));
    put(DoubleHigh, bitsOf(high), bitsOf(DBL_MAX));
}
double HATAttrSpec::getLowDoubleRange() const { return decode<double>(get(DoubleLow, bitsOf(-DBL_MAX))); }
double HATAttrSpec::getHighDoubleRange() const { return decode<double>(get(DoubleHigh, bitsOf(DBL_MAX))); }
void HATAttrSpec::addDiscreteDoubleRange(double value) { append(DoubleList, bitsOf(value)); }
void HATAttrSpec::setDoubleDefault(double value) { put(DoubleDefault, bitsOf(value), bitsOf(0.0)); }
double HATAttrSpec::getDoubleDefault() const { return decode<double>(get(DoubleDefault, bitsOf(0.0))); }

// Both texts are taken before either is put: one given may be the other's old value. Where both are new, which is what
// completes the range of a property, they are put at once.
void HATAttrSpec::putRange(Facet low, std::string_view least, std::string_view greatest) {
    const auto high = static_cast<Facet>(low + 1);
    HSTUniqString newLow(least), newHigh(greatest);
    if (has(low) || has(high) || newLow.empty() || newHigh.empty()) {
        putText(low, std::move(newLow));
        putText(high, std::move(newHigh));
        return;
    }
    insertSlots(indexOf(low), {bitsOf(newLow.id()), bitsOf(newHigh.id())});
    present_ |= 3U << low;
    newLow.detach();
    newHigh.detach();
}

void HATAttrSpec::setHexRange(std::string_view low, std::string_view high) { putRange(HexLow, low, high); }
void HATAttrSpec::setBinaryRange(std::string_view low, std::string_view high) { putRange(BinaryLow, low, high); }

void HATAttrSpec::Draft::giveTo(HATAttrSpec& spec) {
    spec.description_ = std::move(description_);
    put(WidthAndPrecision, pack(width_, precision_), pack(0, DefaultPrecision));
    if (!items_.empty()) present_ |= 1U << list_;
    if (!unit_.empty()) present_ |= 1U << UnitList;
    const std::size_t count = bitsIn(present_) + items_.size() + !unit_.empty();
    std::uint64_t* const packed = allocateSlots(capacityFor(count));
    isBegun_ = false;
    std::uint64_t* next = packed;
    for (std::uint32_t rest = present_ & ((1U << FirstList) - 1); rest != 0; rest &= rest - 1)
        *next++ = slots_[std::countr_zero(rest)];
    // Lengths of the lists in the order of the facets, then their items. All of the values but texts come before units.
    const bool unitsFirst = list_ > UnitList;
    const bool listed = !items_.empty();
    if (listed && !unitsFirst) *next++ = items_.size();
    if (!unit_.empty()) *next++ = 1;
    if (listed && unitsFirst) *next++ = items_.size();
    if (!unitsFirst) next = std::copy(items_.begin(), items_.end(), next);
    if (!unit_.empty()) *next++ = bitsOf(unit_.detach());
    if (unitsFirst) std::copy(items_.begin(), items_.end(), next);
    spec.slots_ = packed;
    spec.present_ = std::exchange(present_, 0);
    items_.clear(); // their texts belong to the attribute now
    list_ = NumFacets;
    width_ = 0;
    precision_ = DefaultPrecision;
}

void HATAttrSpec::Draft::clear() noexcept {
    constexpr std::uint32_t texts = (1U << FirstList) - (1U << FirstText);
    for (std::uint32_t rest = present_ & texts; rest != 0; rest &= rest - 1) release(slots_[std::countr_zero(rest)]);
    if (list_ >= FirstTextList)
        for (const std::uint64_t item : items_) release(item);
    items_.clear();
    list_ = NumFacets;
    unit_ = HSTUniqString();
    description_ = HATOwnText();
    width_ = 0;
    precision_ = DefaultPrecision;
    present_ = 0;
}

std::size_t HATAttrSpec::packedBytes() const { return capacityFor(numSlots()) * sizeof *slots_; }

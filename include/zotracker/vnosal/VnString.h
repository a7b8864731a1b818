#pragma once

#include "zotracker/vnosal/Export.h"

#include <atomic>
#include <compare>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace VnOSAL {

class VnStringList;

inline constexpr std::wstring_view whiteSpace = L" \t\r\n\v\f";

// Ignore compares units by their upper-case forms in the system's invariant table, as the file
// system compares names.
enum class ECase : std::uint8_t
{
    Respect,
    Ignore
};

// What a non-empty string points to; its units and a terminating zero follow it in memory.
struct VnStringBlock
{
    std::atomic<std::uint32_t> references;
    std::uint32_t length;
    std::uint32_t capacity; // units, without the terminating zero
    std::uint32_t origin;   // the block's number in its pool
};

// A wide string of UTF-16 units, shared by its copies until one of them changes.
//
// A copy costs one count, whatever the length. Positions and lengths are counted in units; a
// position past the end means the end, a count past the end means the rest. Arguments may be parts
// of the string itself.
//
// Errors: nothing throws. An operation that finds no memory, or would exceed `maxLength`, makes
// the string invalid: empty, with IsValid() false, until text is assigned to it. What is built from
// an invalid string is invalid too.
//
// Threads: different strings may be used by different threads at once, whether they share their
// text or not; one string by one thread at a time.
class ZO_VNOSAL_API VnString
{
public:
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);
    static constexpr std::size_t maxLength = 0x3FFFFFFF;

    constexpr VnString() noexcept = default;
    VnString(const wchar_t* text) noexcept; // null is empty
    VnString(std::wstring_view text) noexcept;
    VnString(std::size_t count, wchar_t unit) noexcept;
    VnString(const VnString& other) noexcept : block(Share(other.block)) {}
    VnString(VnString&& other) noexcept : block(other.block) { other.block = nullptr; }
    VnString& operator=(const VnString& other) noexcept
    {
        VnStringBlock* const old = block;
        block = Share(other.block);
        Drop(old);
        return *this;
    }
    VnString& operator=(VnString&& other) noexcept
    {
        VnStringBlock* const taken = other.block;
        other.block = nullptr;
        Drop(block);
        block = taken;
        return *this;
    }
    VnString& operator=(std::wstring_view text) noexcept
    {
        Assign(text);
        return *this;
    }
    VnString& operator=(const wchar_t* text) noexcept { return *this = VnString(text); }
    ~VnString() { Drop(block); }

    // The text, zero-terminated; valid until the string changes or goes.
    const wchar_t* GetText() const noexcept { return block ? Units(block) : L""; }
    std::size_t GetLength() const noexcept { return block ? block->length : 0; }
    std::size_t GetCapacity() const noexcept { return block ? block->capacity : 0; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    bool IsValid() const noexcept;
    operator std::wstring_view() const noexcept { return {GetText(), GetLength()}; }
    const wchar_t* begin() const noexcept { return GetText(); }
    const wchar_t* end() const noexcept { return GetText() + GetLength(); }

    // The unit at `position`, 0 past the end.
    wchar_t operator[](std::size_t position) const noexcept
    {
        return position < GetLength() ? Units(block)[position] : L'\0';
    }
    VnString& SetAt(std::size_t position, wchar_t unit) noexcept; // nothing past the end

    VnString& Assign(std::wstring_view text) noexcept;
    VnString& Append(std::wstring_view text) noexcept;
    VnString& Append(wchar_t unit) noexcept
    {
        const std::size_t length = GetLength();
        if (!IsWritable(length + 1))
            return Append(std::wstring_view(&unit, 1));
        Units(block)[length] = unit;
        SetLength(length + 1);
        return *this;
    }
    VnString& operator+=(std::wstring_view text) noexcept { return Append(text); }
    VnString& operator+=(wchar_t unit) noexcept { return Append(unit); }
    VnString& Insert(std::size_t position, std::wstring_view text) noexcept;
    VnString& Remove(std::size_t position, std::size_t count = npos) noexcept;
    VnString& Replace(std::size_t position, std::size_t count, std::wstring_view text) noexcept;
    void Clear() noexcept;

    // Replaces every occurrence from left to right and returns their number; an empty `what` occurs
    // nowhere.
    std::size_t ReplaceAll(std::wstring_view what, std::wstring_view with,
                           ECase mode = ECase::Respect) noexcept;

    // Makes room for `capacity` units in a block of its own, so that text up to that length needs
    // no memory. False, with the string unchanged, when there is no memory.
    bool Reserve(std::size_t capacity) noexcept;

    // Room for `length` units to write into, null when there is no memory. The text up to there is
    // kept, what lies beyond it is undefined. CloseBuffer, with the number of units now in use,
    // must follow before anything else is done with the string.
    wchar_t* OpenBuffer(std::size_t length) noexcept;
    void CloseBuffer(std::size_t length) noexcept;

    // Positions of the first occurrence that begins at `from` or later, or of the last one that
    // begins at `from` or earlier; npos when there is none.
    std::size_t Find(std::wstring_view what, std::size_t from = 0,
                     ECase mode = ECase::Respect) const noexcept;
    std::size_t FindLast(std::wstring_view what, std::size_t from = npos,
                         ECase mode = ECase::Respect) const noexcept;
    std::size_t FindAnyOf(std::wstring_view set, std::size_t from = 0) const noexcept;
    std::size_t FindLastAnyOf(std::wstring_view set, std::size_t from = npos) const noexcept;
    std::size_t FindNoneOf(std::wstring_view set, std::size_t from = 0) const noexcept;
    std::size_t FindLastNoneOf(std::wstring_view set, std::size_t from = npos) const noexcept;
    bool Contains(std::wstring_view what, ECase mode = ECase::Respect) const noexcept;
    bool StartsWith(std::wstring_view what, ECase mode = ECase::Respect) const noexcept;
    bool EndsWith(std::wstring_view what, ECase mode = ECase::Respect) const noexcept;

    // Below, equal to or above 0: the order of the units' values.
    int Compare(std::wstring_view other, ECase mode = ECase::Respect) const noexcept;

    VnString GetLeft(std::size_t count) const noexcept { return GetMid(0, count); }
    VnString GetMid(std::size_t position, std::size_t count = npos) const noexcept;
    VnString GetRight(std::size_t count) const noexcept;

    // Cut the units of `set` off the ends.
    VnString& Trim(std::wstring_view set = whiteSpace) noexcept;
    VnString& TrimLeft(std::wstring_view set = whiteSpace) noexcept;
    VnString& TrimRight(std::wstring_view set = whiteSpace) noexcept;

    // The parts between the occurrences of `separator`, at least one; all of the text when
    // `separator` is empty.
    VnStringList Split(std::wstring_view separator) const noexcept;

    // Unit by unit after the system's invariant table; the length stays.
    VnString& MakeUpper() noexcept;
    VnString& MakeLower() noexcept;

    // Equal for equal strings (or strings that differ in case only), also between processes.
    std::uint64_t GetHash(ECase mode = ECase::Respect) const noexcept;

    // printf for wide text, the same on all systems: flags "-+ #0", width and precision (also "*"),
    // the sizes hh h l ll L j z t I32 I64, the conversions d i u o x X c s p f F e E g G %. "%s"
    // takes const wchar_t*, "%hs" takes const char* in UTF-8, null prints "(null)"; "%c" takes a
    // unit; "%p" prints 16 digits. The decimal point is a point in every locale. Anything else is
    // copied as it stands.
    static VnString Format(const wchar_t* format, ...) noexcept;
    static VnString FormatV(const wchar_t* format, std::va_list arguments) noexcept;
    VnString& AppendFormat(const wchar_t* format, ...) noexcept;

    // Digits above 9 are lower-case letters. A radix outside 2 to 36 gives an empty string.
    static VnString FromInt64(std::int64_t value, unsigned radix = 10) noexcept;
    static VnString FromUInt64(std::uint64_t value, unsigned radix = 10) noexcept;

    // The shortest decimal number that reads back as the same value; "inf", "-inf" or "nan".
    static VnString FromDouble(double value) noexcept;

    // Read the whole text as a number; a sign may lead, white space may surround it, the decimal
    // point is a point in every locale. False, with `value` unchanged, when it is none or does not
    // fit.
    bool ToInt64(std::int64_t& value, unsigned radix = 10) const noexcept;
    bool ToUInt64(std::uint64_t& value, unsigned radix = 10) const noexcept;
    bool ToDouble(double& value) const noexcept;

    friend bool operator==(const VnString& left, const VnString& right) noexcept
    {
        return std::wstring_view(left) == std::wstring_view(right);
    }
    friend bool operator==(const VnString& left, std::wstring_view right) noexcept
    {
        return std::wstring_view(left) == std::wstring_view(right);
    }
    friend bool operator==(const VnString& left, const wchar_t* right) noexcept
    {
        return std::wstring_view(left) == std::wstring_view(right);
    }
    friend std::strong_ordering operator<=>(const VnString& left, const VnString& right) noexcept
    {
        return left.Compare(right) <=> 0;
    }
    friend std::strong_ordering operator<=>(const VnString& left, std::wstring_view right) noexcept
    {
        return left.Compare(right) <=> 0;
    }
    friend std::strong_ordering operator<=>(const VnString& left, const wchar_t* right) noexcept
    {
        return left.Compare(right) <=> 0;
    }

    friend VnString operator+(VnString left, const VnString& right) noexcept
    {
        left.Append(right);
        return left;
    }
    friend VnString operator+(VnString left, std::wstring_view right) noexcept
    {
        left.Append(right);
        return left;
    }
    friend VnString operator+(VnString left, const wchar_t* right) noexcept
    {
        left.Append(right);
        return left;
    }
    friend VnString operator+(std::wstring_view left, const VnString& right) noexcept
    {
        return VnString(left) + right;
    }
    friend VnString operator+(const wchar_t* left, const VnString& right) noexcept
    {
        return VnString(left) + right;
    }

private:
    static wchar_t* Units(VnStringBlock* of) noexcept { return reinterpret_cast<wchar_t*>(of + 1); }
    static VnStringBlock* Share(VnStringBlock* shared) noexcept
    {
        if (shared)
            shared->references.fetch_add(1, std::memory_order_relaxed);
        return shared;
    }
    // A sole owner needs no interlocked operation: nobody is left to share the block.
    static void Drop(VnStringBlock* dropped) noexcept
    {
        if (dropped && (dropped->references.load(std::memory_order_acquire) == 1 ||
                        dropped->references.fetch_sub(1, std::memory_order_acq_rel) == 1))
            Recycle(dropped);
    }
    static void Recycle(VnStringBlock* unused) noexcept;
    bool IsWritable(std::size_t length) const noexcept
    {
        return block && length <= block->capacity &&
               block->references.load(std::memory_order_acquire) == 1;
    }
    void SetLength(std::size_t length) noexcept
    {
        block->length = static_cast<std::uint32_t>(length);
        Units(block)[length] = L'\0';
    }
    bool HoldsPartOf(std::wstring_view text) const noexcept;
    bool Regrow(std::size_t capacity) noexcept;
    void Invalidate() noexcept;

    VnStringBlock* block = nullptr; // null for the empty string
};

} // namespace VnOSAL

template <>
struct std::hash<VnOSAL::VnString>
{
    std::size_t operator()(const VnOSAL::VnString& text) const noexcept
    {
        return static_cast<std::size_t>(text.GetHash());
    }
};

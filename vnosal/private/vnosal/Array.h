#pragma once

#include <cstddef>
#include <cstdlib>
#include <type_traits>

namespace VnOSAL {

// Values in a row, in memory that grows as needed; for plain data only. Append tells whether there
// was memory.
template <class Value>
class CArray
{
    static_assert(std::is_trivially_copyable_v<Value>);

public:
    CArray() noexcept = default;
    ~CArray() { std::free(values); }
    CArray(const CArray&) = delete;
    CArray& operator=(const CArray&) = delete;

    bool Append(const Value& value) noexcept
    {
        if (count == capacity)
        {
            const std::size_t wanted = capacity == 0 ? 16 : capacity * 2;
            auto* const grown = static_cast<Value*>(std::realloc(values, wanted * sizeof(Value)));
            if (!grown)
                return false;
            values = grown;
            capacity = wanted;
        }
        values[count++] = value;
        return true;
    }
    void Cut(std::size_t length) noexcept { count = length; }
    std::size_t GetCount() const noexcept { return count; }
    bool IsEmpty() const noexcept { return count == 0; }
    Value& operator[](std::size_t index) noexcept { return values[index]; }
    const Value& operator[](std::size_t index) const noexcept { return values[index]; }
    Value& GetLast() noexcept { return values[count - 1]; }
    const Value& GetLast() const noexcept { return values[count - 1]; }

private:
    Value* values = nullptr;
    std::size_t count = 0;
    std::size_t capacity = 0;
};

} // namespace VnOSAL

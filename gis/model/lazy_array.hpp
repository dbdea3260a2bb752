// A fixed table whose entries are made on first use. The layer tables hold
// an entry for every possible layer, each with texts filled with blanks when
// made; made all at once at start-up they would cost every run megabytes of
// memory writes, though a run uses a few entries. Here an entry is made, as
// T(), the first time it is indexed, and an entry reset is as good as new.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

template <typename T, std::size_t N>
class LazyArray {
public:
    // Indexed by the project's signed numbers as a plain array is.
    template <std::integral I>
    T& operator[](I index) {
        const auto i = static_cast<std::size_t>(index);
        if (!made_[i]) {
            ::new (static_cast<void*>(store_[i])) T();
            made_[i] = true;
        }
        return *std::launder(reinterpret_cast<T*>(store_[i]));
    }
    // The entry as if never used: made afresh when next indexed.
    template <std::integral I>
    void reset(I index) {
        made_[static_cast<std::size_t>(index)] = false;
    }
    void resetAll() {
        for (bool& m : made_) m = false;
    }

private:
    static_assert(std::is_trivially_destructible_v<T>, "entries are dropped without being destroyed");
    alignas(T) unsigned char store_[N][sizeof(T)];
    bool made_[N] = {};
};

// A row of N entries indexed by signed numbers, for a table of rows.
template <typename T, std::size_t N>
struct LazyRow {
    T at[N];
    T& operator[](int32_t k) { return at[k]; }
};

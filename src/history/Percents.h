#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vellumor {

// A dictionary from window kind to percent, sorted by kind. A week of history holds ten thousands
// of them, nearly all with the same kinds: those stand in one list that neighbours share, and the
// few percents in the dictionary itself.
class Percents {
public:
    Percents() = default;
    // Of two entries of one kind the later counts. Linear but for the sorting.
    explicit Percents(std::vector<std::pair<std::string_view, double>> entries)
    {
        std::stable_sort(entries.begin(), entries.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        for (const auto& [kind, percent] : entries)
            set(kind, percent);
    }
    Percents(std::initializer_list<std::pair<std::string_view, double>> entries)
        : Percents(std::vector(entries))
    {
    }

    // Replaces what stood under `kind`.
    void set(std::string_view kind, double percent)
    {
        const std::size_t place = placeOf(kind);
        if (!isAt(place, kind))
            insert(place, kind);
        setAt(place, percent);
    }
    // Under the kind at `index`, which is below size().
    void setAt(std::size_t index, double percent)
    {
        (index < m_first.size() ? m_first[index] : m_more[index - m_first.size()]) = percent;
    }

    // Null pointer without one.
    [[nodiscard]] const double* find(std::string_view kind) const
    {
        const auto index = indexOf(kind);
        return index ? &at(*index) : nullptr;
    }
    [[nodiscard]] const std::string& kindAt(std::size_t index) const { return (*m_kinds)[index]; }
    [[nodiscard]] std::size_t size() const { return m_kinds == nullptr ? 0 : m_kinds->size(); }
    [[nodiscard]] bool empty() const { return size() == 0; }
    // The percent of the kind at `index`, which is below size().
    [[nodiscard]] const double& at(std::size_t index) const
    {
        return index < m_first.size() ? m_first[index] : m_more[index - m_first.size()];
    }
    // Whether both stand on one list, so that a kind has the same place in either. False says
    // nothing: equal kinds may stand in two lists.
    [[nodiscard]] bool sharesKindsOf(const Percents& other) const
    {
        return m_kinds == other.m_kinds;
    }
    // Where `kind` stands; nothing without an entry.
    [[nodiscard]] std::optional<std::size_t> indexOf(std::string_view kind) const
    {
        const std::size_t place = placeOf(kind);
        return isAt(place, kind) ? std::optional(place) : std::nullopt;
    }

    // Goes through the entries in the order of their kinds: pairs of kind and percent.
    class Iterator {
    public:
        Iterator(const Percents& percents, std::size_t index)
            : m_percents(&percents)
            , m_index(index)
        {
        }
        std::pair<const std::string&, double> operator*() const
        {
            return {m_percents->kindAt(m_index), m_percents->at(m_index)};
        }
        Iterator& operator++()
        {
            ++m_index;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

    private:
        const Percents* m_percents;
        std::size_t m_index;
    };
    [[nodiscard]] Iterator begin() const { return {*this, 0}; }
    [[nodiscard]] Iterator end() const { return {*this, size()}; }

    bool operator==(const Percents& other) const
    {
        if (size() != other.size())
            return false;
        for (std::size_t i = 0; i < size(); ++i) {
            if (at(i) != other.at(i) || kindAt(i) != other.kindAt(i))
                return false;
        }
        return true;
    }

private:
    using Kinds = std::vector<std::string>;

    [[nodiscard]] std::size_t placeOf(std::string_view kind) const
    {
        if (empty() || m_kinds->back() < kind) // as where entries come sorted
            return size();
        return static_cast<std::size_t>(std::lower_bound(m_kinds->begin(), m_kinds->end(), kind) -
                                        m_kinds->begin());
    }
    [[nodiscard]] bool isAt(std::size_t place, std::string_view kind) const
    {
        return place < size() && kindAt(place) == kind;
    }

    // Makes room for a new kind, in a list of its own from now on.
    void insert(std::size_t place, std::string_view kind)
    {
        if (m_kinds == nullptr)
            m_kinds = std::make_shared<Kinds>();
        else if (m_kinds.use_count() > 1)
            m_kinds = std::make_shared<Kinds>(*m_kinds);
        m_kinds->emplace(m_kinds->begin() + static_cast<std::ptrdiff_t>(place), kind);
        if (size() > m_first.size())
            m_more.resize(size() - m_first.size());
        for (std::size_t i = size() - 1; i > place; --i)
            setAt(i, at(i - 1));
    }

    std::shared_ptr<Kinds> m_kinds;  // sorted; changed only while nobody shares it; may be null
    std::array<double, 4> m_first{}; // the percents of the first kinds
    std::vector<double> m_more;      // those of the others
};

} // namespace vellumor

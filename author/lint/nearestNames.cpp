#include "author/lint/nearestNames.h"

#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace hdnt::author {

size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<size_t> beforeLast(b.size() + 1);
    std::vector<size_t> last(b.size() + 1);
    std::iota(last.begin(), last.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        std::vector<size_t> row(b.size() + 1, i);
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast = std::exchange(last, std::move(row));
    }
    return last.back();
}

std::vector<std::string> nearestNames(const std::string& wanted, const std::vector<std::string>& names) {
    const std::string upper = HSTStringUtils::to_upper_copy(wanted);
    const size_t farthest = std::min<size_t>(3, upper.size() / 4 + 1);
    std::vector<std::pair<size_t, std::string>> near;
    for (const std::string& name : names) {
        const std::string upperName = HSTStringUtils::to_upper_copy(name);
        const size_t longer = std::max(name.size(), upper.size());
        if (!upper.empty() && upperName.compare(0, upper.size(), upper) == 0) near.emplace_back(farthest + 1, name);
        if (longer - std::min(name.size(), upper.size()) > farthest) continue;
        const size_t distance = editDistance(upper, upperName);
        if (distance <= farthest) near.emplace_back(distance, name);
    }
    std::sort(near.begin(), near.end());
    std::vector<std::string> result;
    for (const auto& [distance, name] : near)
        if (result.size() < 3 && std::find(result.begin(), result.end(), name) == result.end()) result.push_back(name);
    return result;
}

constexpr std::string_view asks = "; did you mean ";
constexpr std::string_view between = ", ";

std::string questionOf(const std::vector<std::string>& near) {
    std::string text;
    for (const std::string& name : near) text.append(text.empty() ? asks : between).append(name);
    return text.empty() ? text : text + "?";
}

std::vector<std::string> suggestionsIn(std::string_view line) {
    const std::size_t at = line.rfind(asks);
    std::vector<std::string> names;
    if (at == line.npos || !line.ends_with('?')) return names;
    line = line.substr(at + asks.size(), line.size() - at - asks.size() - 1);
    for (std::size_t end = 0; end != line.npos; line.remove_prefix(std::min(line.size(), end + between.size()))) {
        end = line.find(between);
        names.emplace_back(line.substr(0, end));
    }
    return names;
}

std::string question(const std::string& wanted, const std::vector<std::string>& names) {
    return questionOf(nearestNames(wanted, names));
}

} // namespace hdnt::author

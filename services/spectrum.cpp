#include "services/spectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace pyrux {
namespace {

constexpr float topFrequency = 22050.0F;
constexpr float lowestEdge = 20.0F;
constexpr std::size_t decades = 3; // up to 100, 1000 and 10000 Hz
constexpr float amplitudeScale = 0.25F;
constexpr std::int32_t dark = std::numeric_limits<std::int32_t>::min();

/// Where the bands begin: as many in each decade, the rest above.
std::vector<float> bandEdges(std::size_t bandCount)
{
    std::vector<float> edges(bandCount);
    const std::size_t perDecade = bandCount / decades;
    float decadeEnd = 100.0F;
    float before = 0.0F; // last edge of the decade before
    std::size_t at = 0;
    for (std::size_t decade = 0; decade < decades; ++decade, decadeEnd *= 10.0F) {
        // The first decade has its lowest edge given, so one step less.
        const bool first = decade == 0;
        const float start = first ? lowestEdge : before;
        const std::size_t steps = first ? perDecade - 1 : perDecade;
        const float step = steps == 0 ? 0.0F : (decadeEnd - start) / static_cast<float>(steps);
        for (std::size_t i = 0; i < perDecade; ++i)
            edges[at++] = start + step * static_cast<float>(first ? i : i + 1);
        before = edges[at - 1] = perDecade == 1 && first ? lowestEdge : decadeEnd;
    }
    const float step = (topFrequency - before) / static_cast<float>(bandCount - at + 1);
    for (std::size_t i = 1; at < bandCount; ++i)
        edges[at++] = before + step * static_cast<float>(i);
    return edges;
}

std::int32_t levelOf(float amplitude, int levelCount)
{
    const float value = std::log10(amplitude) * amplitudeScale;
    const float level = std::round(value * static_cast<float>(levelCount)) - 1.0F;
    if (std::isnan(level) || level < static_cast<float>(dark)) // silence: its logarithm has no end
        return dark;
    return static_cast<std::int32_t>(std::min(level, static_cast<float>(levelCount - 1)));
}

} // namespace

std::vector<std::int32_t> spectrumToLevels(std::span<const float> bins, int bandCount, int levelCount)
{
    std::vector<std::int32_t> levels(static_cast<std::size_t>(std::max(bandCount, 0)), dark);
    if (levels.size() < decades || bins.empty())
        return levels;
    const std::vector<float> edges = bandEdges(levels.size());
    const float binWidth = topFrequency / static_cast<float>(bins.size());
    const auto firstFrom = [&](std::size_t i, float edge) {
        while (i < bins.size() && static_cast<float>(i) * binWidth < edge)
            ++i;
        return std::min(i, bins.size());
    };
    std::size_t i = 0;
    for (std::size_t band = 0; band < levels.size(); ++band) {
        const std::size_t begin = firstFrom(i, edges[band]);
        if (begin == bins.size())
            break; // no bin is left for this band and those above
        // A band has one bin at least, even where the next one begins below it.
        const bool last = band + 1 == levels.size();
        i = last ? bins.size() : firstFrom(begin + 1, edges[band + 1]);
        levels[band] = levelOf(*std::max_element(&bins[begin], bins.data() + i), levelCount);
    }
    return levels;
}

} // namespace pyrux

#include "services/spectrum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using pyrux::spectrumToLevels;
using Levels = std::vector<std::int32_t>;
using Bins = std::vector<float>;

/// A spectrum of 22050 bins, 1 Hz each, silent but for one.
Bins toneAt(std::size_t hertz, float amplitude = 1.0F)
{
    Bins bins(22050, 0.0F);
    bins.at(hertz) = amplitude;
    return bins;
}

/// The bands of 19 that are lit.
Levels litBands(const Bins& bins)
{
    Levels lit;
    const Levels levels = spectrumToLevels(bins, 19, 6);
    EXPECT_EQ(levels.size(), 19u);
    for (std::size_t i = 0; i < levels.size(); ++i)
        if (levels[i] >= -1)
            lit.push_back(static_cast<std::int32_t>(i));
    return lit;
}

std::int32_t levelOf(float amplitude, int levelCount = 6)
{
    return spectrumToLevels(toneAt(20, amplitude), 19, levelCount).front();
}

} // namespace

TEST(SpectrumToLevels, hasNineteenBandsFrom20To16025Hertz)
{
    constexpr std::size_t edges[]{20,  36,   52,   68,   84,   100,  250,  400,   550,  700,
                                  850, 1000, 2500, 4000, 5500, 7000, 8500, 10000, 16025};
    for (std::int32_t band = 0; band < 19; ++band) {
        EXPECT_EQ(litBands(toneAt(edges[band])), Levels{band}) << edges[band];
        EXPECT_EQ(litBands(toneAt(edges[band] - 1)), band == 0 ? Levels{} : Levels{band - 1}) << edges[band];
    }
    EXPECT_EQ(litBands(toneAt(0)), Levels{});
    EXPECT_EQ(litBands(toneAt(22049)), Levels{18});
}

TEST(SpectrumToLevels, takesAQuarterOfTheLogarithmOfABandsLargestBin)
{
    // level = round(log10(amplitude) / 4 * 6) - 1
    EXPECT_EQ(levelOf(10.0F), 1); // 0.25: 1.5, which rounds to 2
    EXPECT_EQ(levelOf(9.9F), 0);
    EXPECT_EQ(levelOf(10000.0F), 5);
    EXPECT_EQ(levelOf(1e9F), 5); // never above the highest
    EXPECT_EQ(levelOf(2.2F), 0); // 0.51
    EXPECT_EQ(levelOf(2.1F), -1);
    EXPECT_EQ(levelOf(1.0F), -1);
    EXPECT_EQ(levelOf(0.1F), -3);   // -1.5, away from zero
    EXPECT_EQ(levelOf(0.001F), -6); // -4.5 rounds to -5
    EXPECT_EQ(levelOf(10000.0F, 100), 99);
    EXPECT_EQ(levelOf(100.0F, 100), 49);
    EXPECT_EQ(levelOf(100.0F, 1), 0);

    Bins bins = toneAt(30, 1.0F);
    bins[29] = 100.0F;
    bins[20] = 10.0F;
    EXPECT_EQ(spectrumToLevels(bins, 19, 6).front(), 2);
}

TEST(SpectrumToLevels, keepsSilenceDark)
{
    for (const std::int32_t level : spectrumToLevels(Bins(256, 0.0F), 19, 6))
        EXPECT_LT(level, 0);
    EXPECT_LT(levelOf(0.0F), -1000);
    EXPECT_LT(levelOf(-1.0F), 0);
    EXPECT_LT(levelOf(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(levelOf(std::numeric_limits<float>::infinity()), 5);
}

TEST(SpectrumToLevels, givesEachBandABinOfItsOwnWhereBinsAreWide)
{
    // 256 bins of 86.1 Hz: the lowest bands begin above one another, bin by bin.
    for (std::size_t bin = 0; bin <= 5; ++bin) {
        Bins bins(256, 0.0F);
        bins[bin] = 1.0F;
        EXPECT_EQ(litBands(bins), bin == 0 ? Levels{} : Levels{static_cast<std::int32_t>(bin) - 1}) << bin;
    }
    // 250 Hz and above begins at bin 7, so bin 6 is the sixth band's.
    Bins bins(256, 0.0F);
    bins[6] = 1.0F;
    EXPECT_EQ(litBands(bins), Levels{5});
    bins[6] = 0.0F;
    bins[7] = 1.0F;
    EXPECT_EQ(litBands(bins), Levels{6});
    bins[7] = 0.0F;
    bins[186] = 1.0F; // 16020.7 Hz
    EXPECT_EQ(litBands(bins), Levels{17});
    bins[186] = 0.0F;
    bins[187] = 1.0F;
    EXPECT_EQ(litBands(bins), Levels{18});
}

TEST(SpectrumToLevels, neverReadsBehindTheBins)
{
    for (std::size_t count = 0; count < 40; ++count) {
        const Bins bins(count, 1.0F);
        Levels lit = litBands(bins);
        // Bin 0 is below the lowest edge; each other bin lights a band as long as there are any.
        EXPECT_LE(lit.size(), count == 0 ? 0 : count - 1) << count;
        EXPECT_EQ(lit.empty(), count < 2) << count;
    }
}

TEST(SpectrumToLevels, takesOtherCountsOfBands)
{
    for (const int bands : {-1, 0, 1, 2}) {
        const Levels levels = spectrumToLevels(Bins(1000, 1.0F), bands, 6);
        EXPECT_EQ(levels.size(), bands < 0 ? 0u : static_cast<std::size_t>(bands));
        for (const std::int32_t level : levels)
            EXPECT_LT(level, -1);
    }
    // Six bands: 20, 100 | 550, 1000 | 5500, 10000.
    constexpr std::size_t edges[]{20, 100, 550, 1000, 5500, 10000};
    for (std::size_t band = 0; band < 6; ++band) {
        const Levels levels = spectrumToLevels(toneAt(edges[band], 10000.0F), 6, 6);
        ASSERT_EQ(levels.size(), 6u);
        for (std::size_t i = 0; i < 6; ++i)
            EXPECT_EQ(levels[i] == 5, i == band) << edges[band] << " " << i;
    }
    // Eight: two more above, a third and two thirds of the way to 22050.
    EXPECT_EQ(spectrumToLevels(toneAt(14016, 10000.0F), 8, 6)[5], 5);
    EXPECT_EQ(spectrumToLevels(toneAt(14017, 10000.0F), 8, 6)[6], 5);
    EXPECT_EQ(spectrumToLevels(toneAt(18033, 10000.0F), 8, 6)[6], 5);
    EXPECT_EQ(spectrumToLevels(toneAt(18034, 10000.0F), 8, 6)[7], 5);
    EXPECT_EQ(spectrumToLevels(toneAt(20, 10000.0F), 3, 6)[0], 5);
}

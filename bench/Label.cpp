#include "Ratio.h"

#include "ui/LabelPainter.h"

#include <QPainter>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace vellumor::bench {

namespace {

using Groups = std::vector<MenuBarLabel::Group>;

// Four accounts with two percents each.
Groups fourAccounts(MenuBarMode mode)
{
    std::vector<AccountRender> renders;
    for (const double percent : {7.0, 36.0, 62.0, 93.0}) {
        AccountRender render;
        render.state = AccountRenderState::ok;
        render.sessionPercent = percent;
        render.worstNonSessionPercent = 100.0 - percent;
        render.nonSessionPercents = {100.0 - percent};
        renders.push_back(render);
    }
    return MenuBarLabel::groups(renders, mode, true);
}

std::size_t slotsOf(const Groups& groups)
{
    std::size_t count = 0;
    for (const auto& group : groups)
        count += group.size();
    return count;
}

// A picture of the same size with as many rectangles.
QImage filled(const QImage& like, std::size_t rectangles)
{
    QImage image(like.size(), like.format());
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const int step = image.width() / static_cast<int>(rectangles);
    for (int i = 0; i < static_cast<int>(rectangles); ++i)
        painter.fillRect(i * step, 0, step / 2, image.height(), Qt::black);
    return image;
}

void fillAll(const StatusLabel& like, const Groups& groups)
{
    for (const QImage& image : like.whole)
        benchmark::DoNotOptimize(filled(image, slotsOf(groups)));
    for (std::size_t i = 0; i < like.parts.size(); ++i) {
        for (const QImage& image : like.parts[i])
            benchmark::DoNotOptimize(filled(image, groups[i].size()));
    }
}

Comparison labelOf(const std::string& name, MenuBarMode mode, double limit)
{
    const auto painter = std::make_shared<LabelPainter>();
    const Groups groups = fourAccounts(mode);
    const StatusLabel drawn = painter->label(groups, mode, true);
    if (slotsOf(groups) != 8 || drawn.parts.size() != 4)
        std::abort();
    Comparison comparison{name,
                          [=] { benchmark::DoNotOptimize(painter->label(groups, mode, true)); },
                          [=] { fillAll(drawn, groups); },
                          200,
                          5,
                          limit};
    comparison.isCpuTime = true;
    comparison.mostMicroseconds = 1000;
    return comparison;
}

} // namespace

std::vector<Comparison> labels()
{
    return {labelOf("label of four accounts, bars, CPU time", MenuBarMode::bars, 15),
            labelOf("label of four accounts, numbers, CPU time", MenuBarMode::numbers, 10)};
}

} // namespace vellumor::bench

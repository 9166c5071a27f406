#pragma once

// Helpers shared by the QC graph tests: visit data sets, series and a target
// that fails on a chosen operation.

#include "output/GraphSeries.h"
#include "output/PageRect.h"
#include "output/RecordingTarget.h"
#include "platform/Recordset.h"

#include <QDate>
#include <QTest>

#include <cmath>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <utility>

// Geometry is compared to a millionth of a unit: the layout's arithmetic is
// in floating point and the expected values are worked out by hand.
#define GRAPH_COMPARE_NEAR(actual, expected)                                                                           \
    QVERIFY2(std::abs(double(actual) - double(expected)) < 1e-6, qPrintable(QStringLiteral("%1 is %2, expected %3")    \
                                                                                .arg(QLatin1String(#actual))           \
                                                                                .arg(double(actual), 0, 'g', 17)       \
                                                                                .arg(double(expected), 0, 'g', 17)))

namespace GraphTestData
{
// A visit data set as the report store returns it: the visit date, then the value.
inline RecordsetPtr Visits(std::initializer_list<std::pair<QVariant, QVariant>> rows)
{
    auto data = std::make_shared<Recordset>(QStringList{QStringLiteral("VisitDate"), QStringLiteral("Value")});
    for (const auto& row : rows)
        data->AppendRow(QVariantList{row.first, row.second});
    return data;
}

inline QVariant Day(int year, int month, int day)
{
    return QVariant(QDate(year, month, day));
}

inline GraphSeries Series(double mean, double sd, double cv, qint32 decimals, RecordsetPtr data)
{
    GraphSeries series;
    series.TableName = QStringLiteral("Spirometry");
    series.VarName = QStringLiteral("FVC");
    series.Unit = QStringLiteral("L");
    series.Mean = mean;
    series.SD = sd;
    series.CV = cv;
    series.DecimalPlaces = decimals;
    series.Data = std::move(data);
    return series;
}

inline PageRect Rect(qint32 left, qint32 top, qint32 right, qint32 bottom)
{
    PageRect rect;
    rect.Left = left;
    rect.Top = top;
    rect.Right = right;
    rect.Bottom = bottom;
    return rect;
}

// Records like RecordingTarget, but throws std::runtime_error (no
// RuntimeError) from the operation named when it is reached.
class FailingTarget final : public OutputTarget
{
public:
    enum class FailOn
    {
        Print,
        Circle
    };

    explicit FailingTarget(FailOn failOn)
        : m_failOn(failOn)
    {}

    RecordingTarget& recorded() { return m_target; }

    double ScaleLeft() const override { return m_target.ScaleLeft(); }
    double ScaleTop() const override { return m_target.ScaleTop(); }
    double ScaleWidth() const override { return m_target.ScaleWidth(); }
    double ScaleHeight() const override { return m_target.ScaleHeight(); }
    double CurrentX() const override { return m_target.CurrentX(); }
    double CurrentY() const override { return m_target.CurrentY(); }
    void SetCurrentX(double x) override { m_target.SetCurrentX(x); }
    void SetCurrentY(double y) override { m_target.SetCurrentY(y); }
    void Print(const QString& text) override
    {
        failIf(FailOn::Print);
        m_target.Print(text);
    }
    double TextWidth(const QString& text) override { return m_target.TextWidth(text); }
    double TextHeight(const QString& text) override { return m_target.TextHeight(text); }
    void SetFont(const QString& typeface) override { m_target.SetFont(typeface); }
    QString Font() const override { return m_target.Font(); }
    void SetFontSize(double points) override { m_target.SetFontSize(points); }
    double FontSize() const override { return m_target.FontSize(); }
    void SetFontBold(bool bold) override { m_target.SetFontBold(bold); }
    bool FontBold() const override { return m_target.FontBold(); }
    void SetForeColor(const QColor& color) override { m_target.SetForeColor(color); }
    QColor ForeColor() const override { return m_target.ForeColor(); }
    void SetDrawWidth(int pixels) override { m_target.SetDrawWidth(pixels); }
    int DrawWidth() const override { return m_target.DrawWidth(); }
    void SetDrawStyle(int style) override { m_target.SetDrawStyle(style); }
    int DrawStyle() const override { return m_target.DrawStyle(); }
    void Line(double x1, double y1, double x2, double y2, const QColor& color, bool box) override
    {
        m_target.Line(x1, y1, x2, y2, color, box);
    }
    void PSet(double x, double y, const QColor& color) override { m_target.PSet(x, y, color); }
    void Circle(double x, double y, double radius, const QColor& color) override
    {
        failIf(FailOn::Circle);
        m_target.Circle(x, y, radius, color);
    }
    void Disc(double x, double y, double radius, const QColor& color) override { m_target.Disc(x, y, radius, color); }
    void NewPage() override { m_target.NewPage(); }
    void Cls() override { m_target.Cls(); }
    void EndDoc() override { m_target.EndDoc(); }
    QString DeviceName() const override { return m_target.DeviceName(); }

private:
    void failIf(FailOn operation)
    {
        if (operation == m_failOn)
            throw std::runtime_error("the device is gone");
    }

    FailOn m_failOn;
    RecordingTarget m_target;
};
} // namespace GraphTestData

#pragma once

#include "output/RecordingTarget.h"

#include <QString>
#include <QStringList>

#include <vector>

// Compares the recording of a report printed without QC rules with the
// recording of the same report printed with them: the two must be the same
// operation for operation, except that
// - some chart markers (a PSet, a Circle and the two Lines of the cross, all
//   around one centre) are one Disc of the Circle's radius at that centre in
//   the second, and
// - the second has the violation pages after the first's last page, before
//   its EndDoc.
struct FlaggedRecording
{
    QString difference;               // empty when the recordings agree as described
    int discs = 0;                    // markers drawn as discs
    std::vector<RecordedOp> appended; // the second's operations after the first's last page, EndDoc left out

    static FlaggedRecording compare(const std::vector<RecordedOp>& without, const std::vector<RecordedOp>& with)
    {
        FlaggedRecording result;
        size_t i = 0;
        size_t j = 0;
        while (i < without.size())
        {
            const RecordedOp& a = without[i];
            if (a.kind == RecordedOp::Kind::EndDoc && i + 1 == without.size())
            {
                if (with.empty() || with.back().kind != RecordedOp::Kind::EndDoc)
                {
                    result.difference = QStringLiteral("the recording with rules does not end with EndDoc");
                    return result;
                }
                result.appended.assign(with.begin() + qsizetype(j), with.end() - 1);
                return result;
            }
            if (j >= with.size())
            {
                result.difference = QStringLiteral("the recording with rules ends at operation %1").arg(j);
                return result;
            }
            const RecordedOp& b = with[j];
            if (b.kind == RecordedOp::Kind::Disc && isMarkerAt(without, i, b))
            {
                ++result.discs;
                i += 4;
                ++j;
                continue;
            }
            if (!same(a, b))
            {
                result.difference = QStringLiteral("operation %1 without rules (%2) differs from operation %3 with "
                                                   "them (%4)")
                                        .arg(i)
                                        .arg(describe(a))
                                        .arg(j)
                                        .arg(describe(b));
                return result;
            }
            ++i;
            ++j;
        }
        if (j != with.size())
            result.difference = QStringLiteral("the recording with rules goes on after the one without ends");
        return result;
    }

    static bool same(const RecordedOp& a, const RecordedOp& b)
    {
        return a.kind == b.kind && a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2 && a.text == b.text &&
               a.color == b.color && a.font == b.font && a.fontSize == b.fontSize && a.fontBold == b.fontBold &&
               a.drawWidth == b.drawWidth && a.drawStyle == b.drawStyle;
    }

    static QString describe(const RecordedOp& op)
    {
        return QStringLiteral("kind %1 at %2, %3 to %4, %5 \"%6\"")
            .arg(int(op.kind))
            .arg(op.x1)
            .arg(op.y1)
            .arg(op.x2)
            .arg(op.y2)
            .arg(op.text);
    }

    // The texts printed in operations.
    static QStringList texts(const std::vector<RecordedOp>& ops)
    {
        QStringList printed;
        for (const RecordedOp& op : ops)
        {
            if (op.kind == RecordedOp::Kind::Print)
                printed.append(op.text);
        }
        return printed;
    }

private:
    // ops[at..at + 3] is the circled cross that disc replaces: its dot at the
    // disc's centre, its circle of the disc's radius, both strokes through the
    // centre, in the same colour and pen.
    static bool isMarkerAt(const std::vector<RecordedOp>& ops, size_t at, const RecordedOp& disc)
    {
        using Kind = RecordedOp::Kind;
        if (at + 4 > ops.size())
            return false;
        const RecordedOp& dot = ops[at];
        const RecordedOp& circle = ops[at + 1];
        const RecordedOp& across = ops[at + 2];
        const RecordedOp& down = ops[at + 3];
        if (dot.kind != Kind::PSet || circle.kind != Kind::Circle || across.kind != Kind::Line ||
            down.kind != Kind::Line)
            return false;
        const double r = circle.x2;
        return dot.x1 == disc.x1 && dot.y1 == disc.y1 && circle.x1 == disc.x1 && circle.y1 == disc.y1 && r == disc.x2 &&
               across.x1 == disc.x1 - r && across.x2 == disc.x1 + r && across.y1 == disc.y1 && down.y1 == disc.y1 - r &&
               down.y2 == disc.y1 + r && down.x1 == disc.x1 && circle.color == disc.color &&
               circle.drawWidth == disc.drawWidth && circle.drawStyle == disc.drawStyle;
    }
};

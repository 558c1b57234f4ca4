#include "upsformat.h"

#include <QCoreApplication>

namespace UpsFormat {

namespace {

constexpr int kPhaseCount = 3;

// The value in shown units; false when it is absent or no number (it then reads 0).
bool readNumber(const QVariant &value, const UpsPoints::Info &point, const Options &options, double *number)
{
    bool ok = false;
    if (!options.scaled) {
        *number = value.toDouble(&ok);
        return ok;
    }
    int raw = value.toInt(&ok);
    if (point.isSigned && options.reinterpretSign)
        raw = qint16(quint16(raw));
    *number = raw / double(point.divisor);
    return ok;
}

QString numberText(const QMap<int, QVariant> &data, int id, const UpsPoints::Info &point, const Options &options)
{
    double number = 0.0;
    if (!readNumber(data.value(id), point, options, &number) && !options.missing.isNull())
        return options.missing;
    const int decimals = options.decimals >= 0 ? options.decimals : point.decimals;
    return QString::number(number, 'f', decimals);
}

} // namespace

QString noReading()
{
    return QStringLiteral("--");
}

QString joinPhases(const QString (&phases)[kPhaseCount], const char *separators)
{
    return phases[0] + QLatin1Char(separators[0]) + phases[1] + QLatin1Char(separators[1]) + phases[2];
}

bool isThreePhase(const QMap<int, QVariant> &data, UpsPoints::PhaseGroup group, Phases rule)
{
    if (group == UpsPoints::PhaseGroup::None)
        return false;
    const int count = data.value(UpsPoints::phaseCountId(group)).toInt();
    switch (rule) {
    case Phases::ByCount:
        return count == UpsPoint::ThreePhases;
    case Phases::ByCountNotOne:
        return count != 1;
    case Phases::Single:
        return false;
    case Phases::Three:
        break;
    }
    return true;
}

QString codeText(UpsPoints::CodeList list, int code, int fallbackIndex, const char *context)
{
    int count = 0;
    const char *const *texts = UpsPoints::codeTexts(list, &count);
    int index = code - 1;
    if (index < 0 || index >= count)
        index = fallbackIndex;
    if (index < 0 || index >= count)
        return QString();
    // A context the catalogue does not mark still gets the English text.
    const char *source = UpsCatalogue::source(UpsPoints::codeList(list), context, index);
    return QCoreApplication::translate(context, source ? source : texts[index]);
}

QString text(const QMap<int, QVariant> &data, int id, const Options &options)
{
    const UpsPoints::Info &point = UpsPoints::info(id);
    if (point.codes != UpsPoints::CodeList::None)
        return codeText(point.codes, data.value(id).toInt(), options.codeFallback, options.context);
    if (point.isText)
        return data.value(id).toString();

    QString text;
    if (isThreePhase(data, point.group, options.phases)) {
        QString phases[kPhaseCount];
        for (int phase = 0; phase < kPhaseCount; ++phase) {
            const int phaseId = options.firstPhaseForAll ? id : UpsPoints::phaseId(id, phase);
            phases[phase] = numberText(data, phaseId, point, options);
        }
        text = joinPhases(phases, options.separators);
    } else {
        text = numberText(data, id, point, options);
    }
    const char *unit = options.unit ? options.unit : point.unit;
    if (options.withUnit && *unit)
        text += QLatin1Char(' ') + QString::fromUtf8(unit);
    return text;
}

} // namespace UpsFormat

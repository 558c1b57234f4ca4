#ifndef UPSFORMAT_H
#define UPSFORMAT_H

#include <QMap>
#include <QString>
#include <QVariant>

#include "upspoints.h"

// Turns a data point into the text a log, a console or a form shows, read
// through the data point table: scale, decimals, unit, code texts and the
// R/S/T layout. The options keep each caller's own conventions explicit.
namespace UpsFormat {

enum class Phases {
    ByCount,       // R/S/T when the point's phase count reads 3
    ByCountNotOne, // R/S/T unless the point's phase count reads 1
    Single,
    Three,
};

struct Options
{
    Phases phases = Phases::ByCount;
    int decimals = -1;             // -1: the table's
    bool scaled = true;            // false: the stored number read as a real, unscaled
    bool reinterpretSign = true;   // false: signed quantities shown as stored
    bool firstPhaseForAll = false; // phase R's value stands for S and T as well
    const char *separators = "//"; // between R and S, between S and T
    bool withUnit = false;         // a blank and the unit after the value
    const char *unit = nullptr;    // with withUnit, UTF-8 shown instead of the table's unit
    QString missing;               // shown for a value that is absent or no number; null: read as 0
    const char *context = UpsPoints::CodeContext; // of code texts
    int codeFallback = 0;          // list index shown for a code outside its list
};

QString text(const QMap<int, QVariant> &data, int id, const Options &options = Options());

// Whether a point of that group is laid out as R/S/T under a phase rule.
bool isThreePhase(const QMap<int, QVariant> &data, UpsPoints::PhaseGroup group, Phases rule = Phases::ByCount);

// What a form shows for a reading it does not trust.
QString noReading();
// Phase values R, S and T as one text: "R/S/T" with the default separators.
QString joinPhases(const QString (&phases)[3], const char *separators = "//");

// Text of code n of a list (entry n - 1), translated in context; the entry
// at fallbackIndex for a code outside the list.
QString codeText(UpsPoints::CodeList list, int code, int fallbackIndex, const char *context = UpsPoints::CodeContext);

} // namespace UpsFormat

#endif // UPSFORMAT_H

#ifndef PARAMETERINFORMATION_H
#define PARAMETERINFORMATION_H

#include <QMap>
#include <QString>
#include <QStringList>

// One line of the rated information page: how a data point is labelled,
// scaled and turned into text. The page owns the records it allocates.
struct ParameterInformation
{
    // Formatting kinds understood by RateInfoForm::getPvalue.
    enum Kind {
        KindInt = 0,            // one scaled integer
        KindPhaseInt = 1,       // three consecutive ids when three-phase
        KindPhasePairInt = 2,   // every other id (32-bit register pairs) when three-phase
        KindLimitedInt = 3,     // scaled integer, "--" outside minValue..maxValue
        KindDecimal = 4,        // one scaled value with one decimal
        KindPhaseDecimal = 5,   // three consecutive ids with one decimal when three-phase
        KindBlank6 = 6,
        KindBlank7 = 7,
        KindBlank8 = 8,
        KindByteText = 9,       // one character per id, `length` ids, up to a zero byte
        KindText = 10,          // the value as text (identity blocks)
        KindCode = 11           // code looked up in `combo`
    };

    static constexpr int ThreePhases = 3;

    QString name;
    QString value;
    QString unit;
    float scale = 1.0f;
    int maxValue = 0;
    int minValue = 0;
    int kind = KindInt;
    int dataId = 0;
    QString text;               // not used by any formatting kind
    int length = 0;
    int phases = 1;
    QMap<QString, int> combo;   // code text -> code

    // Registers the code texts, index = code. A text given twice keeps only
    // its last code, because the map is keyed by text.
    void addCombo(const QStringList &texts);
};

#endif // PARAMETERINFORMATION_H

#include "parameterinformation.h"

void ParameterInformation::addCombo(const QStringList &texts)
{
    for (int i = 0; i < texts.size(); ++i)
        combo.insert(texts.at(i), i);
}

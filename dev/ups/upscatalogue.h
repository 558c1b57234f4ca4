#ifndef UPSCATALOGUE_H
#define UPSCATALOGUE_H

#include <QString>

// The texts of the UPS model as each class that shows them marks them for
// translation: data point titles, code list texts and event texts. Qt's
// lupdate extracts a text only in the context it is marked in, so every
// class that translates a model text in its own context has its own column
// here, even where the English wording is the same.
namespace UpsCatalogue {

enum class List {
    Titles,           // by data point id
    ThreePhaseTitles, // by data point id, the R/S/T heading
    BatteryStatus,    // by list index (code - 1)
    OutputSource,     // by list index (code - 1)
    BatteryState,     // by list index (code - 1)
    Events,           // by event text index, see UpsAlarms
};

// The source text of entry key as context marks it; null where that context
// shows no such entry. context is the translating class's name.
const char *source(List list, const char *context, int key);
// source() translated in context. The event log keeps two texts untranslated.
QString text(List list, const char *context, int key);

// Entries of a code list, and the source text of one in the first context
// that marks it (the wording is the same in every context).
int codeCount(List list);
const char *const *codeSources(List list);

// Whether context marks source in any list; whether any context marks it.
bool isMarked(const char *context, const char *source);
bool isModelText(const char *source);

} // namespace UpsCatalogue

#endif // UPSCATALOGUE_H

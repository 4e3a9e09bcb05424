#include "desktop/mnemonics.h"

namespace k2k {

QString Mnemonics::Mark(std::string_view label) {
    QString text = QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size()));
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar letter = text[i].toLower();
        if (!letter.isLetterOrNumber() || taken_.contains(letter)) continue;
        taken_.insert(letter);
        return text.insert(i, '&');
    }
    return text;
}

}  // namespace k2k

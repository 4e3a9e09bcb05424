// The letters that reach a control with Alt.
#pragma once

#include <QSet>
#include <QString>
#include <string_view>

namespace k2k {

class Mnemonics {
  public:
    // Keeps a letter for a control whose label does not show it.
    void Reserve(QChar letter) { taken_.insert(letter.toLower()); }

    // The label with "&" in front of its first letter or digit that is still free; a label without one stays as it is.
    QString Mark(std::string_view label);

  private:
    QSet<QChar> taken_;
};

}  // namespace k2k

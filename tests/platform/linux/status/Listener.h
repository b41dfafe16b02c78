#pragma once

#include <QObject>

namespace vellumor::test {

// Counts how often it is told.
class Listener : public QObject {
    Q_OBJECT

public:
    int heard = 0;

public Q_SLOTS:
    void hear() { ++heard; }
};

} // namespace vellumor::test

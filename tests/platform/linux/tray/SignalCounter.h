#pragma once

#include <QObject>

namespace vellumor::test {

// Counts the signals of the bus that it is connected to.
class SignalCounter final : public QObject {
    Q_OBJECT

public:
    int count = 0;

public Q_SLOTS:
    void on() { ++count; }
};

} // namespace vellumor::test

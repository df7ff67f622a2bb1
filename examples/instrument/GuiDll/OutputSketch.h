#pragma once

#include <QWidget>

namespace Orvia {

/// What comes out of the instrument, drawn over frequency and level: one line, grey while the output is off.
class OutputSketch : public QWidget
{
public:
    void setOutput(double frequency, double level, bool isOn);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintGrid(QPainter *painter) const;
    QRectF plot() const;
    double xOf(double frequency) const;
    double yOf(double level) const;

    double m_frequency = 0;
    double m_level = 0;
    bool m_isOn = false;
};

} // namespace Orvia

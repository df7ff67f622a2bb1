#pragma once

#include "examples/instrument/GuiDll/Quantity.h"

#include <QLineEdit>

#include <functional>

namespace Orvia {

/// A setting in big digits. Up, down and the wheel step the marked digit; left, right and a click mark
/// another one. Typing starts a new number, Enter takes it, Escape or leaving the field drops it.
class NumberEditor : public QLineEdit
{
public:
    /// `stepExponent`: the digit that is marked at first, as a power of ten of the basic unit.
    NumberEditor(const Quantity &quantity, int stepExponent);

    /// The setting's value; a number that is being typed stays. Does not call `entered`.
    void setValue(double value);

    /// Called with a new value. Whoever takes it answers with setValue().
    std::function<void(double value)> entered;
    /// Called when what was typed is no value of this setting; it stays for correction.
    std::function<void()> refused;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    bool isTyping() const { return isModified(); }
    void showValue();
    void take();
    void step(int count);
    void markDigit(int position);
    void moveMark(int direction);
    void setRefused(bool isRefused);

    const Quantity &m_quantity;
    double m_value;
    int m_stepExponent;
    int m_wheelAngle = 0; ///< turned since the last step, in eighths of a degree
};

} // namespace Orvia

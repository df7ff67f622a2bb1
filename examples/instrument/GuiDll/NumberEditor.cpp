#include "examples/instrument/GuiDll/NumberEditor.h"

#include <QKeyEvent>
#include <QStyle>
#include <QWheelEvent>

namespace Orvia {

namespace {

constexpr int wheelNotch = 120;

/// Whether the key changes the text, as opposed to moving about in it.
bool changesText(const QKeyEvent *event)
{
    const bool isCommand = event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const bool isCharacter = !event->text().isEmpty() && event->text().front().isPrint();
    return (isCharacter && !isCommand) || event->matches(QKeySequence::Paste) ||
           event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete;
}

} // namespace

NumberEditor::NumberEditor(const Quantity &quantity, int stepExponent)
    : m_quantity(quantity), m_value(quantity.setting.defaultValue), m_stepExponent(stepExponent)
{
    setAlignment(Qt::AlignRight);
    setContextMenuPolicy(Qt::NoContextMenu);
    setFocusPolicy(Qt::WheelFocus);
    setMaxLength(32);
    showValue();
}

void NumberEditor::setValue(double value)
{
    m_value = value;
    if (!isTyping())
        showValue();
}

void NumberEditor::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        take();
        return;
    case Qt::Key_Escape:
        showValue();
        return;
    case Qt::Key_Up:
        step(1);
        return;
    case Qt::Key_Down:
        step(-1);
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (isTyping())
            break;
        moveMark(event->key() == Qt::Key_Left ? -1 : 1);
        return;
    default:
        break;
    }
    if (!isTyping() && changesText(event))
        selectAll();
    QLineEdit::keyPressEvent(event);
}

void NumberEditor::wheelEvent(QWheelEvent *event)
{
    m_wheelAngle += event->angleDelta().y();
    step(m_wheelAngle / wheelNotch);
    m_wheelAngle %= wheelNotch;
    event->accept();
}

void NumberEditor::mouseReleaseEvent(QMouseEvent *event)
{
    QLineEdit::mouseReleaseEvent(event);
    const QPoint halfDigit(fontMetrics().horizontalAdvance('0') / 2, 0); // positions are between digits
    if (!isTyping())
        markDigit(cursorPositionAt(event->position().toPoint() - halfDigit));
}

void NumberEditor::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    if (!isTyping())
        showValue();
}

void NumberEditor::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason)
        return;
    showValue();
}

void NumberEditor::showValue()
{
    setRefused(false);
    setText(quantityText(m_quantity, m_value)); // not modified afterwards
    if (hasFocus())
        markDigit(positionOf(text(), m_stepExponent - unitOf(m_quantity, m_value).exponent));
    else
        setCursorPosition(0);
}

void NumberEditor::take()
{
    if (!isTyping())
        return;
    const std::optional<double> value = parseQuantity(m_quantity, text(), unitOf(m_quantity, m_value));
    setRefused(!value);
    if (!value) {
        selectAll();
        refused();
        return;
    }
    showValue();
    entered(*value);
}

void NumberEditor::step(int count)
{
    if (!isTyping() && count != 0)
        entered(stepped(m_quantity, m_value, m_stepExponent, count));
}

void NumberEditor::markDigit(int position)
{
    const std::optional<int> place = placeAt(text(), position);
    if (place)
        m_stepExponent = *place + unitOf(m_quantity, m_value).exponent;
    setSelection(positionOf(text(), m_stepExponent - unitOf(m_quantity, m_value).exponent), 1);
}

void NumberEditor::moveMark(int direction)
{
    int position = selectionStart() + direction;
    while (position >= 0 && position < text().size() && !placeAt(text(), position))
        position += direction;
    markDigit(position);
}

void NumberEditor::setRefused(bool isRefused)
{
    if (property("refused").toBool() == isRefused)
        return;
    setProperty("refused", isRefused);
    style()->polish(this); // the style sheet shows it
}

} // namespace Orvia

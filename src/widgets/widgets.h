#pragma once

#include "confirm.h"
#include "mywinstyle.h"

#include <QFrame>
#include <QLabel>
#include <QListView>
#include <QMap>
#include <QPixmap>
#include <QPointer>

#include <functional>

class Element;
class QAbstractButton;
class QDialog;
class QPushButton;

// The touch panel on which everything is placed, px.
constexpr int panelWidth = 1920;
constexpr int panelHeight = 1200;

// Behind what has no valid value, and behind what shows a link that is lost.
inline const QColor invalidGround(255, 192, 192);

// Whether from this event of `widget` on a finger may lift unseen (hidden, disabled, or blocked by a modal
// dialog): what lives only while the finger is down must end with it.
bool liftMayBeLost(const QWidget& widget, const QEvent& event);

// From two quick touches the button takes the first as long as `unanswered` holds: what it started is not
// started again by an impatient finger before the machine has told of it.
void takeOneTouch(QAbstractButton* button, const std::function<bool()>& unanswered);

// A lamp: shows the image of a state.
class PoSprite : public QLabel
{
    Q_OBJECT

public:
    explicit PoSprite(QWidget* parent = nullptr);

    // The image for the state `index`, in place of an earlier one. A file that is missing gives an empty
    // image.
    void addPixmap(int index, const QString& file);
    void setSprite(int index); // asserts on a state without an image

public slots:
    void changedState(int state);
    void changedState(float state); // the fraction is cut off; what fits no integer has no image

signals:
    void clicked(); // at the press

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    QMap<int, QPixmap> m_mapPixmaps;
};

// A number that can be touched. It keeps the value as it came; what it shows is value * coefficient.
class PoLabel : public QLabel
{
    Q_OBJECT

public:
    explicit PoLabel(QWidget* parent = nullptr);

    float value() const { return m_value; } // without the coefficient
    bool told() const { return m_told; }    // whether there was a value yet
    int whole() const;                      // value(), its fraction cut off, kept to what an int holds
    float coeff() const { return m_coeff; }

    // Fixed notation with that many decimals; above 2 decimals the exponent notation with one.
    void setValue(float value, int decimals);
    void setDepth(int decimals); // decimals of the values that changedValue brings
    void setCoeff(float coeff);  // shows the present value anew; before the first one the text stays

    // Follows the element from its next change on: its number, with its decimals, and its validity if it
    // comes with one.
    void setElement(Element* element);

public slots:
    void changedValid(bool valid); // an invalid number stays on view in black on pink
    void changedValue(float value);

signals:
    void clicked(); // at the press

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    bool m_paletteSaved = false;
    bool m_told = false;
    int m_depth = 0;
    float m_coeff = 1.0F;
    float m_value = 0;
    QColor m_savedText;
    QColor m_savedBackground;
    bool m_savedFill = false;
};

// A label that can act as a button: it then steps aside under the finger.
class MyLabel : public QLabel
{
    Q_OBJECT

public:
    explicit MyLabel(QWidget* parent = nullptr);

    void setButton(bool button);

signals:
    void clicked(); // at the press of the left button

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool m_button = false;
    bool m_moved = false;
};

class MyListView : public QListView
{
    Q_OBJECT

public:
    explicit MyListView(QWidget* parent = nullptr);

signals:
    void signal_currentChanged(int row); // -1 when nothing is current

protected slots:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
};

// The title window around a dialog. The dialog becomes its child, is shown and hidden together with it,
// and takes it along when it is destroyed, so that nobody needs to keep a pointer to the frame. While the
// window above is disabled by the key switch, the title says so.
class MyFrame : public QFrame
{
    Q_OBJECT

public:
    // `x`, `y`: top left corner on the panel, corrected so that the frame stays on it. `margin`: px between
    // the frame's line and the dialog. `modal`: the window of `parent` waits. `show`: visible at once;
    // otherwise it comes with the first show of either. The frame belongs to that window
    // and not to `parent` itself, which telemetry may disable with all that belongs to it.
    MyFrame(QString title, int x, int y, int margin, QDialog* dialog, QWidget* parent, bool modal, bool show);
    ~MyFrame() override;

    static int title_height() { return 56; } // px

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override; // closing is the dialog's rejection
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void buildTitle(const QString& title);
    void colourTitle(const QColor& colour);
    void followWindow();
    void fit(); // takes the size from the dialog's
    void placeOnPanel(int x, int y);
    void endDrag();

    QDialog* m_dialog; // null once it is destroyed
    QFrame* m_titleBar = nullptr;
    QLabel* m_title = nullptr;
    QPushButton* m_closeButton = nullptr;
    int m_margin;
    bool m_locked = false; // with the window above
    QPointer<QWidget> m_lastFocus;
    bool m_dragging = false;
    QPoint m_dragOffset; // pointer against the frame's corner
};

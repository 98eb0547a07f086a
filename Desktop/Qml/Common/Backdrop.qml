// The ground of a screen that lies over others.
import QtQuick

Rectangle {
    anchors.fill: parent
    Blocker { }
}

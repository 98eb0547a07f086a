// A ring that closes as work goes on.
import QtQuick
import QtQuick.Shapes

Item {
    id: ring

    property real progress: 0
    property real size: 160
    property real thickness: 18
    property color track: Qt.rgba(Theme.text.r, Theme.text.g, Theme.text.b, 0.12)

    implicitWidth: size
    implicitHeight: size
    property real shownProgress: progress
    Behavior on shownProgress {
        NumberAnimation { duration: 250; easing.type: Easing.InOutQuad }
    }

    component Arc: Shape {
        id: arc
        property color color
        property real from: 0
        property real sweep: 360
        anchors.fill: parent
        antialiasing: true
        ShapePath {
            strokeColor: arc.color
            strokeWidth: ring.thickness
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            PathAngleArc {
                centerX: ring.size / 2
                centerY: ring.size / 2
                radiusX: (ring.size - ring.thickness) / 2
                radiusY: radiusX
                startAngle: arc.from - 90
                sweepAngle: arc.sweep
            }
        }
    }
    Arc { color: ring.track }
    // Pieces, each a little further on the way from one colour to the other.
    Repeater {
        model: 24
        Arc {
            required property int index
            readonly property real share: index / 23
            visible: ring.shownProgress * 24 > index
            from: index * 15
            sweep: Math.max(0.1, Math.min(15, (ring.shownProgress * 24 - index) * 15))
            color: Qt.rgba(0.16 + 0.08 * share, 0.64 - 0.20 * share, 0.92 - 0.07 * share, 1)
        }
    }
}

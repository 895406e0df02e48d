#pragma once

#include "draw/Camera.h"

// A camera that goes round the block's centre (128,128,128) at a distance,
// as a preview turns it: the turn about the vertical axis and the height
// angle (held between -89 and 89 degrees so the view never flips), and the
// distance (held between 120 and 6,000 texels). Its starting view is the
// default camera of a block picture.
class OrbitCamera {
public:
    OrbitCamera();

    // Turns by these angles in degrees (a drag).
    void turn(double aroundDegrees, double upDegrees);
    // Moves nearer (factor below 1) or farther (above 1).
    void zoom(double factor);
    // Back to the starting view.
    void reset();

    Camera camera() const;
    double distance() const { return m_distance; }

private:
    double m_around = 0;
    double m_up = 0;
    double m_distance = 0;
};

// Pausing virtual time. The application is held where commands are served, before the deliveries of
// that moment.
#pragma once

namespace tavsim {

void pauseTime();
void resumeTime();

// Lets the application go on until the time has moved on, or until a delivery was made.
void stepToNextMoment();
void stepToNextDelivery();

// Whether the application is to be held now.
bool isTimeHeld();

}  // namespace tavsim

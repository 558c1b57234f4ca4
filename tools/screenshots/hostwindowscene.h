#ifndef HOSTWINDOWSCENE_H
#define HOSTWINDOWSCENE_H

class ScreenshotWriter;

// The host window watching two simulated agents on loopback, a single-phase
// unit in utility mode and a three-phase unit with a fan fault, with the
// single-phase unit's view shown. The host library runs in this process; the
// two device groups go into the dev.ini beside this program for the time of
// the picture.
class HostWindowScene
{
public:
    explicit HostWindowScene(ScreenshotWriter &writer);

    void render();

private:
    ScreenshotWriter &m_writer;
};

#endif // HOSTWINDOWSCENE_H

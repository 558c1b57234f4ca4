#include <QtTest>

#include <QImage>

#include "energyline.h"
#include "upsalarms.h"
#include "upspoints.h"

using DataPoints = QMap<int, QVariant>;

namespace {

constexpr int kWidth = 741;
constexpr int kHeight = 483;

// A three-phase unit on utility power with a charging battery: every text
// filled, five of the six flow segments animated.
DataPoints fullMap(int variant)
{
    DataPoints map;
    for (int id = 0; id < UpsPoint::MeasurementCount; ++id)
        map.insert(id, 200 + id + variant);
    map.insert(UpsPoint::BatteryStatus, UpsCode::BatteryBoostCharging);
    map.insert(UpsPoint::BatteryCapacity, 85);
    map.insert(UpsPoint::InputPhases, UpsPoint::ThreePhases);
    map.insert(UpsPoint::OutputSource, UpsCode::SourceUtility);
    map.insert(UpsPoint::OutputPhases, UpsPoint::ThreePhases);
    map.insert(UpsPoint::BypassPhases, UpsPoint::ThreePhases);
    for (int n = 0; n < UpsAlarms::EvaluatedCount; ++n)
        map.insert(UpsPoint::AlarmFirst + n, n % 5 == 0);
    map.insert(UpsPoint::Model, QByteArray("UPS 60KVA 3/3 TOWER").append(QByteArray(45, '\0')));
    map.insert(UpsPoint::Manufacturer, QByteArray("Orvek Power Systems").append(QByteArray(13, '\0')));
    map.insert(UpsPoint::SystemName, QByteArray("Server room A").append(QByteArray(51, '\0')));
    map.insert(UpsPoint::AgentAddress, QStringLiteral("192.168.1.10"));
    return map;
}

} // namespace

class BenchEnergyline : public QObject
{
    Q_OBJECT
private slots:
    void paintTick();
    void paintAfterNewData();
    void flushData();
};

// One animation tick: the steady case, ten times a second.
void BenchEnergyline::paintTick()
{
    Energyline view;
    view.resize(kWidth, kHeight);
    view.flushData(fullMap(0));
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(250, 250, 250));
    view.render(&image); // warm-up: fonts, glyphs, static layer
    QBENCHMARK {
        view.advanceFlow();
        view.render(&image);
    }
}

// The first paint after a data refresh, which redraws the static layer
// (about once a second with the host's refresh rate).
void BenchEnergyline::paintAfterNewData()
{
    Energyline view;
    view.resize(kWidth, kHeight);
    const DataPoints maps[] = {fullMap(0), fullMap(1)};
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(250, 250, 250));
    view.flushData(maps[0]);
    view.render(&image);
    int i = 0;
    QBENCHMARK {
        view.flushData(maps[++i % 2]);
        view.render(&image);
    }
}

void BenchEnergyline::flushData()
{
    Energyline view;
    const DataPoints map = fullMap(0);
    QBENCHMARK {
        view.flushData(map);
    }
}

QTEST_MAIN(BenchEnergyline)
#include "bench_energyline.moc"

#include "fuzz.h"
#include "nctesthost.h"
#include "plant/beamunit.h"
#include "plant/controller.h"
#include "plant/controllerlink.h"
#include "plant/instructor.h"
#include "plant/vacuumsystem.h"

namespace {

constexpr double step = 0.01; // s, as the installation does them

// Programs for the channels 1, 2, 3 with form feeds between them, run for twenty seconds.
struct Programs : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        NcTestHost host;
        plant::NcMachine machine(host);
        int channel = 0;
        for (const QByteArray& program : input.split('\f').mid(0, 3)) {
            const bool runs = machine.start(++channel, QString::fromUtf8(program));
            fuzzCheck(runs == machine.error(channel).isEmpty(),
                      "a refusal without a word, or a start with one");
        }
        for (int i = 0; i < 200; ++i)
            machine.step(10 * step);
        for (const char* word : {"X", "Y", "Z", "PHI", "V", "IR", "IW"})
            fuzzCheck(std::isfinite(host.at(QLatin1String(word))), "an axis stands nowhere");
    }
};
const FuzzName<Programs> programs("programs");

// A line each of the instructor, or behind a mark a command of the console for one of the controllers.
struct Lines : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        plant::MotionController motion(m_site.root());
        plant::VacuumSystem vacuum;
        plant::ControllerLink drive(plant::portOf(motion));
        plant::ControllerLink kvs(vacuum.kvsPort());
        plant::ControllerLink kvk(vacuum.kvkPort());
        plant::Instructor instructor(motion, vacuum, {&drive, &kvs, &kvk});
        plant::BeamUnit unit(motion, site().shmSuffix);
        instructor.setBeamUnit(&unit);
        int steps = 2000;
        for (const QByteArray& bytes : input.split('\n').mid(0, 200)) {
            const QString text = QString::fromUtf8(bytes);
            if (text.startsWith('>'))
                motion.command(text.mid(1));
            else if (text.startsWith('<'))
                vacuum.commandKvs(text.mid(1));
            else if (text.startsWith('='))
                vacuum.commandKvk(text.mid(1));
            else
                fuzzCheck(!instructor.execute(text).contains('\n'), "an answer has more than a line");
            for (int i = 0; i < 50 && steps > 0; ++i, --steps) {
                motion.step(step);
                vacuum.step(step);
                plant::couple(motion, vacuum);
                unit.step(step);
            }
            motion.stepMessages(step);
        }
        const plant::StatusPack status = motion.status();
        for (const float position : status.position)
            fuzzCheck(std::isfinite(position), "an axis stands nowhere");
        for (int gauge = 1; gauge <= plant::gaugeCount; ++gauge)
            fuzzCheck(std::isfinite(vacuum.plant().reading(gauge)), "a gauge reads nothing");
    }
};
const FuzzName<Lines> lines("lines");

} // namespace

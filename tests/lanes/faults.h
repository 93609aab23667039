#pragma once

#include <QString>
#include <QVector>

// What can befall the installation, and how the console must tell it. Rows of one kind are alike for the
// console.
struct Fault
{
    QString kind;
    QString names = {};  // parted by ","; stands for %1 in what follows
    QString inject = {}; // instructor's lines, parted by ";"
    QString mend = {};   // the same; empty for what passes within a second
    QString line = {};   // in the journal once for each injection; empty for none
    QString link = {};   // after a loss of this link the line is told once more; empty for none
    QString mended = {}; // journal line that tells the mending; empty for none
    enum { Still, Sounds, Reconnects } effect = Still; // the buzzer; a connection of `link`, and no line
    QString lamp = {}; // its ground changes until the mending; empty for none but that of the link
};

#define CLEAR "clear LX;clear LX2;clear LY;clear A;clear B;clear C;clear D;clear U1;clear U2;clear V"

const QVector<Fault> kFaults{
    {"breaker", "31,32,33,34,35,36,37,38,39,40", "breaker qf%1 off", "breaker qf%1 on;" CLEAR,
     "QF%1 питания привода"},
    {"QF18", "", "breaker qf18 off", "breaker qf18 on;" CLEAR, "QF18 питания всех приводов", "", "",
     Fault::Sounds},
    {"QF23", "", "breaker qf23 off", "breaker qf23 on", "(QF23 или QF24)!"},
    {"QF28", "", "breaker qf28 off", "breaker qf28 on;" CLEAR, "(QF28)!", "", "", Fault::Sounds},
    {"phase", "", "phase off", "phase on;" CLEAR, "Ошибка фаз 380 Вольт", "", "", Fault::Sounds},
    {"emergency", "", "emergency console on", "emergency console off", "останова на пульте оператора", "", "",
     Fault::Sounds},
    {"emergency", "", "emergency pendant on", "emergency pendant off", "останова на пульте переносном", "",
     "", Fault::Sounds},
    {"rope", "", "rope left on", "rope left off", "левый тросовый выключатель", "", "", Fault::Sounds},
    {"rope", "", "rope right on", "rope right off", "правый тросовый выключатель", "", "", Fault::Sounds},
    {"trip", "A,V,LY", "trip %1 F2019", CLEAR,
     "Ось %1: Превышение максимально-допустимой температуры двигателя", "drive"},
    {"trip", "B,V", "trip %1 F8060", CLEAR, "Ось %1: Превышение максимально-допустимого тока", "drive"},
    {"warning", "B,U1", "trip %1 E2074", "clear %1"},
    {"event", "", "message 131", "", "положительный программный конечник координаты LX"},
    {"error", "4711,12", "cncerror %1", "", "номер %1!"},
    {"key", "", "key off", "key on"},
    {"light", "", "light led on", "light led off", "лентами включено", "", "лентами выключено"},
    {"light", "", "light spots on", "light spots off", "прожекторами включено", "", "прожекторами выключено"},
    {"module", "", "module 1", "module 0", "на загрузочной платформе", "", "модуль в камере"},
    {"pult", "", "pult f2 y", "pult f1 x"},
    {"axis", "D,V", "axis %1 12.5", "axis %1 0"},
    {"gauge", "1,2,3", "gauge pt%1 invalid", "gauge pt%1 good;vacuum on", "с датчиком вакуума PT%1", "kvs",
     "", Fault::Still, "PT%1"},
    {"gauge", "4,5,6", "gauge pt%1 invalid", "gauge pt%1 good;vacuum on", "с датчиком вакуума PT%1", "kvk",
     "", Fault::Still, "PT%1"},
    {"frozen", "1,2,3,4,5,6", "gauge pt%1 freeze", "gauge pt%1 good;vacuum on"},
    {"pump", "NL1,NL2,NZ1,NZ2,ND1,NW2", "pump %1 stop", "pump %1 mend;vacuum on", "насос %1 - ошибка!",
     "kvs"},
    {"water", "all,2,3", "water %1 off", "water %1 on;vacuum on"},
    {"leak", "chamber,gun", "leak %1 0.5", "leak %1 0;vacuum on"},
    {"air", "", "air off", "air on"},
    {"door", "", "vacuum off;door open", "door close", "Дверь открыта", "", "Дверь закрыта"},
    {"beam", "", "beam off", "beam on", "", "", "", Fault::Still, "lblELA"},
    {"drop", "", "link drop 1", "", "", "drive", "", Fault::Reconnects},
    {"drop", "kvs,kvk", "link %1 drop 1", "", "", "%1", "", Fault::Reconnects},
    {"silence", "", "link silence 2", "", "", "drive", "", Fault::Reconnects},
    {"silence", "kvs,kvk", "link %1 silence 2", "", "", "%1", "", Fault::Reconnects},
    {"badtcp", "", "frame badtcp", "", "", "drive", "", Fault::Reconnects},
    {"badtcp", "kvs,kvk", "frame %1 badtcp", "", "", "%1", "", Fault::Reconnects},
    {"baddatagram", "", "frame bad"},
    {"baddatagram", "kvs,kvk", "frame %1 bad"},
    {"jam", "", "jam"}, // this and what follows by the operator and the lane themselves
    {"clock", "", "clock"},
    {"disk", "", "disk"},
};

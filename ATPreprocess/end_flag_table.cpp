// The texts that end a block of modem output, in the order in which they win where two stand at one
// place: final results (3GPP TS 27.007, TS 27.005), the input prompt, unsolicited reports.
#include <cstddef>

#include "qalt_at/parser.h"

static_assert(sizeof(AtEndFlgEntry) == 48);
static_assert(offsetof(AtEndFlgEntry, ResType) == 32);
static_assert(offsetof(AtEndFlgEntry, CmdId) == 36);
static_assert(offsetof(AtEndFlgEntry, HavePara) == 40);
static_assert(offsetof(AtEndFlgEntry, reserved) == 44);

// clang-format off
constinit AtEndFlgEntry QaltWcdma_AtEndFlgTable[54] = {
    {"\r\nOK\r\n", AT_RES_OK, 0x0001, 0, 0},
    {"\r\nERROR\r\n", AT_RES_ERROR, 0x0002, 0, 0},
    {"\r\n+CMS ERROR: ", AT_RES_CMS_ERROR, 0x0003, 1, 0},
    {"\r\n+CME ERROR: ", AT_RES_CME_ERROR, 0x0004, 1, 0},
    {"\r\n> ", AT_RES_PROMPT, 0x0005, 0, 0},
    {"\r\nnot support\r\n", AT_RES_NOT_SUPPORT, 0x0006, 0, 0},
    {"\r\n+TSTUD: ", AT_RES_REPORT, 0x1014, 1, 0},
    {"\r\n+TSTC: ", AT_RES_REPORT, 0x1013, 1, 0},
    {"\r\n+Junsupport: ", AT_RES_REPORT, 0x1012, 1, 0},
    {"\r\n+JMTime: ", AT_RES_REPORT, 0x1011, 1, 0},
    {"\r\n+JSMSR: ", AT_RES_REPORT, 0x1010, 1, 0},
    {"\r\n+JDIST: ", AT_RES_REPORT, 0x100B, 1, 0},
    {"\r\n+JSTI: ", AT_RES_REPORT, 0x1009, 1, 0},
    {"\r\n+JEND\r\n", AT_RES_REPORT, 0x100F, 0, 0},
    {"\r\n+JPSTM: ", AT_RES_REPORT, 0x100E, 1, 0},
    {"\r\n+STKPCI: ", AT_RES_REPORT, 0x100E, 1, 0},
    {"\r\n+JGINP: ", AT_RES_REPORT, 0x100D, 1, 0},
    {"\r\n+JGINK: ", AT_RES_REPORT, 0x100C, 1, 0},
    {"\r\n+JCLAS: ", AT_RES_REPORT, 0x1001, 1, 0},
    {"\r\nJVMAIL: ", AT_RES_REPORT, 0x0018, 1, 0},
    {"\r\n+CMTI: ", AT_RES_REPORT, 0x0019, 1, 0},
    {"\r\n+CDSI: ", AT_RES_REPORT, 0x001A, 1, 0},
    {"\r\n+CDS: ", AT_RES_REPORT, 0x001B, 1, 0},
    {"\r\n+CBM: ", AT_RES_REPORT, 0x001D, 1, 0},
    {"\r\n+CUSD: ", AT_RES_REPORT, 0x0069, 1, 0},
    {"\r\n+CEREG: ", AT_RES_REPORT, 0x3010, 1, 0},
    {"\r\n+CGREG: ", AT_RES_REPORT, 0x3011, 1, 0},
    {"\r\n+JDONR: ", AT_RES_REPORT, 0x103E, 1, 0},
    {"\r\n+JPASR: ", AT_RES_REPORT, 0x103D, 1, 0},
    {"\r\n+JOPERTER: ", AT_RES_REPORT, 0x1049, 1, 0},
    {"\r\n$ARME: ", AT_RES_REPORT, 0x0038, 1, 0},
    {"\r\n+JMCON:", AT_RES_REPORT, 0x0039, 1, 0},
    {"\r\n+JMCONV6:", AT_RES_REPORT, 0x003A, 1, 0},
    {"\r\n+CON_STATUS:", AT_RES_REPORT, 0x003C, 1, 0},
    {"\r\n+JCONSTAT: ", AT_RES_REPORT, 0x300A, 1, 0},
    {"\r\n+JGIPDNS: ", AT_RES_REPORT, 0x300B, 1, 0},
    {"\r\n+JPBIC: ", AT_RES_REPORT, 0x3013, 1, 0},
    {"\r\n+PSBEARER: ", AT_RES_REPORT, 0x1051, 1, 0},
    {"\r\n+EUSIM: ", AT_RES_REPORT, 0x1055, 1, 0},
    {"\r\n+ECSQ: ", AT_RES_REPORT, 0x1056, 1, 0},
    {"\r\n+ESMLA: ", AT_RES_REPORT, 0x1057, 1, 0},
    {"\r\n+ECFU: ", AT_RES_REPORT, 0x1058, 1, 0},
    {"\r\n+ESPEECH: ", AT_RES_REPORT, 0x1059, 1, 0},
    {"\r\n+ESCRI: ", AT_RES_REPORT, 0x105A, 1, 0},
    {"\r\n+ESIMS: ", AT_RES_REPORT, 0x105B, 1, 0},
    {"\r\n+ETESTSIM: ", AT_RES_REPORT, 0x105C, 1, 0},
    {"\r\n+ECIPH: ", AT_RES_REPORT, 0x105D, 1, 0},
    {"\r\n+ECELLINFO: ", AT_RES_REPORT, 0x105E, 1, 0},
    {"\r\n+ENWINFO: ", AT_RES_REPORT, 0x105F, 1, 0},
    {"\r\n+CGEV: ", AT_RES_REPORT, 0x1061, 1, 0},
    {"\r\n+JNITZ: ", AT_RES_REPORT, 0x006F, 1, 0},
    {"\r\nJREFRESH: ", AT_RES_REPORT, 0x0072, 1, 0},
    {"\r\n+JSIMREFRESH\r\n", AT_RES_REPORT, 0x0073, 0, 0},
    {"\r\nJVCONNECT: ", AT_RES_REPORT, 0x0074, 1, 0},
};
// clang-format on

constinit int QaltWcdma_AtEndFlgTableSize =
    sizeof QaltWcdma_AtEndFlgTable / sizeof QaltWcdma_AtEndFlgTable[0];

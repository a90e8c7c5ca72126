# Sample.
SUMMARY = "SIM phonebook, reports and texts of a cellular modem, through an AT server"
LICENSE = "CLOSED"
SRC_URI = "https://downloads.example.com/libqalt-at/libqalt_at-${PV}.tar.gz"
SRC_URI[sha256sum] = "0000000000000000000000000000000000000000000000000000000000000000"
S = "${WORKDIR}/libqalt_at-${PV}"

inherit cmake pkgconfig

# The highest phonebook index of the device's SIM, and one for index 0; at most 1024.
QALT_PBB_CAPACITY ?= "1024"

PACKAGECONFIG ??= ""
PACKAGECONFIG[tools] = "-DQALT_BUILD_PROGRAMS=ON,-DQALT_BUILD_PROGRAMS=OFF,asio cli11 nlohmann-json"

EXTRA_OECMAKE = " \
    -DBUILD_TESTING=OFF \
    -DQALT_PBB_CAPACITY=${QALT_PBB_CAPACITY} \
"

PACKAGES =+ "${PN}-tools"
FILES:${PN}-tools = "${bindir} ${sbindir} ${datadir}/bash-completion"

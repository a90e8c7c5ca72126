################################################################################
#
# libqalt-at (sample)
#
################################################################################

LIBQALT_AT_VERSION = 1.0.0
LIBQALT_AT_SITE = https://downloads.example.com/libqalt-at
LIBQALT_AT_SOURCE = libqalt_at-$(LIBQALT_AT_VERSION).tar.gz
LIBQALT_AT_INSTALL_STAGING = YES
LIBQALT_AT_SUPPORTS_IN_SOURCE_BUILD = NO
LIBQALT_AT_CONF_OPTS = \
	-DBUILD_TESTING=OFF \
	-DQALT_PBB_CAPACITY=$(BR2_PACKAGE_LIBQALT_AT_CAPACITY)

ifeq ($(BR2_PACKAGE_LIBQALT_AT_TOOLS),y)
LIBQALT_AT_DEPENDENCIES = asio cli11 json-for-modern-cpp
LIBQALT_AT_CONF_OPTS += -DQALT_BUILD_PROGRAMS=ON
else
LIBQALT_AT_CONF_OPTS += -DQALT_BUILD_PROGRAMS=OFF
endif

$(eval $(cmake-package))

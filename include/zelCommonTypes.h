#pragma once

// Every public header of libzelCommonTypes.
#include "DaifType.h"
#include "FileMgr.h"
#include "IJsonSerializable.h"
#include "Logger.h"
#include "SfpInfo.h"
#include "Alarm.h"
#include "AlarmManager.h"
#include "VideoFormat.h"
#include "PacketTimeOptions.h"
#include "MoveAverage.h"
#include "EthBasicInfo.h"
#include "TarvikInfo.h"
#include "DeviceCapabilities.h"
#include "SystemBasicInfo.h"

#pragma once

// Every public header of libzelCommonTypes.

/// \mainpage libzelCommonTypes
///
/// The common data types of the media-over-IP device: records that write themselves into a
/// jsoncpp Json::Value and read themselves back (every one derives from IJsonSerializable),
/// the catalogues behind them (VideoFormat, PacketTimeOptions, the alarm catalogue of Alarm),
/// the file store of configuration documents (FileMgr) and the logger every line of the
/// library goes through (Logger).
///
/// Include zelCommonTypes.h for all of them, or the header of one family:
///
/// - IJsonSerializable.h: IJsonSerializable
/// - Logger.h: Logger
/// - SfpInfo.h: SfpInfo
/// - FileMgr.h: FileMgr
/// - DaifType.h: DaifType, DaifMediaType, DaifCapabilities, StreamType, State
/// - ChannelId.h: ChannelId
/// - ChannelList.h: ChannelList
/// - ChannelTableEntry.h: ChannelTableEntry, ChannelInfo
/// - ChannelTables.h: ChannelTable, ChannelTables
/// - ChannelTPCStats.h: ChannelTPCStats
/// - Alarm.h: AlarmSeverity, Alarm
/// - AlarmManager.h: AlarmManager
/// - TarvikInfo.h: SystemTemperature, FanSpeed, DaughterBoard, TarvikInfo, CpuLoadAverage,
///   SystemError
/// - DeviceCapabilities.h: DeviceCapabilities, ProcessBasicInfo
/// - SystemBasicInfo.h: SystemBasicInfo
/// - EthBasicInfo.h: EthBasicInfo, EthBandwidthInfo
/// - SessionStreamList.h: SessionStreamBasics, SessionStreamList
/// - VideoFormat.h: VideoFormat
/// - PacketTimeOptions.h: PacketTimeOptions
/// - MoveAverage.h: MoveAverage
///
/// The headers are installed under include/zelCommonTypes/, which the CMake package
/// (find_package(zelCommonTypes), target zelCommonTypes::zelCommonTypes) and the pkg-config
/// file (zelCommonTypes) put on the include path, so a consumer writes
/// \#include "FileMgr.h".
///
/// Readers never throw on their own; what reaches the caller is jsoncpp's Json::LogicError for
/// a member of the wrong JSON type, as IJsonSerializable describes, and each class names the
/// members that can throw on its line "Members that throw:".

#include "Alarm.h"
#include "AlarmManager.h"
#include "ChannelId.h"
#include "ChannelList.h"
#include "ChannelTPCStats.h"
#include "ChannelTableEntry.h"
#include "ChannelTables.h"
#include "DaifType.h"
#include "DeviceCapabilities.h"
#include "EthBasicInfo.h"
#include "FileMgr.h"
#include "IJsonSerializable.h"
#include "Logger.h"
#include "MoveAverage.h"
#include "PacketTimeOptions.h"
#include "SessionStreamList.h"
#include "SfpInfo.h"
#include "SystemBasicInfo.h"
#include "TarvikInfo.h"
#include "VideoFormat.h"

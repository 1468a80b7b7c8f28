#pragma once

#include "platform/profile/DeviceProfile.hpp"
#include "platform/profile/ProfileValue.hpp"

namespace tavrin::platform {

// Readers of the structs a profile is made of, one JSON object each. Member
// names are the structs' field names; a member left out keeps the field's
// default. They are in this namespace so that the list and optional readers
// find them by argument-dependent lookup.

void readValue(const ProfileValue& value, SocialProfile& out, bool orNull = false);
void readValue(const ProfileValue& value, InstantMessageAddress& out, bool orNull = false);
void readValue(const ProfileValue& value, PostalAddress& out, bool orNull = false);
void readValue(const ProfileValue& value, Contact& out, bool orNull = false);
void readValue(const ProfileValue& value, ContactGroup& out, bool orNull = false);
void readValue(const ProfileValue& value, CalendarSource& out, bool orNull = false);
void readValue(const ProfileValue& value, Calendar& out, bool orNull = false);
void readValue(const ProfileValue& value, Participant& out, bool orNull = false);
// Also checks what a phone's calendar would refuse: an interval or count
// below 1, both count and until.
void readValue(const ProfileValue& value, Recurrence& out, bool orNull = false);
// An event with its calendarIdentifier and optional recurrence. A recurring
// event needs both dates, and must end before its next occurrence begins.
void readValue(const ProfileValue& value, ProfileEvent& out, bool orNull = false);
void readValue(const ProfileValue& value, ProfileReminder& out, bool orNull = false);
void readValue(const ProfileValue& value, Coordinate& out, bool orNull = false);
void readValue(const ProfileValue& value, Asset& out, bool orNull = false);
void readValue(const ProfileValue& value, ProfileCollection& out, bool orNull = false);
void readValue(const ProfileValue& value, MediaTime& out, bool orNull = false);
// mediaType and mediaSubType may be numbers or four characters ("vide").
void readValue(const ProfileValue& value, FormatDescription& out, bool orNull = false);
void readValue(const ProfileValue& value, DepthDataFormat& out, bool orNull = false);
void readValue(const ProfileValue& value, CaptureDevice& out, bool orNull = false);
void readValue(const ProfileValue& value, FileSystemSizes& out, bool orNull = false);
void readValue(const ProfileValue& value, LocaleFacts& out, bool orNull = false);
void readValue(const ProfileValue& value, TimeZoneFacts& out, bool orNull = false);
void readValue(const ProfileValue& value, Carrier& out, bool orNull = false);
void readValue(const ProfileValue& value, PermissionSetting& out, bool orNull = false);

}  // namespace tavrin::platform

// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is known of one block device.
#pragma once

#include "OS/Kernel/K7KDevNode.h"

namespace Kivo {

/// What is known of one block device, a whole disk or a partition, as the storage code finds it.
/// *Threads*: a value, as a std::string.
class K7SAL_API K7BlockDevice : public J3Record<K7BlockDevice> {
public:
    /// What kind of device it is.
    enum K7BlockDeviceType : int32 {
        K7_BLKDEV_TYPE_UNKNOWN = 0,
        K7_BLKDEV_TYPE_DISK = 1,
        K7_BLKDEV_TYPE_PART = 2,
        K7_BLKDEV_TYPE_NAND = 3,
        K7_BLKDEV_TYPE_ROM = 4,
        K7_BLKDEV_TYPE_RAM = 5,
        K7_BLKDEV_TYPE_TAPE = 6,
        K7_BLKDEV_TYPE_LOOP = 7
    };

    /// The bus that it hangs on.
    enum K7BlockDeviceTransport : int32 {
        K7_BLKDEV_TRANSPORT_UNKNOWN = 0,
        K7_BLKDEV_TRANSPORT_SATA = 1,
        K7_BLKDEV_TRANSPORT_SCSI = 2,
        K7_BLKDEV_TRANSPORT_IDE = 3,
        K7_BLKDEV_TRANSPORT_SAS = 4,
        K7_BLKDEV_TRANSPORT_USB = 5
    };

    [[nodiscard]] K7BlockDevice* clone() const override;

    /// "{uuid,name,parent,8.1,2,1,read-writable,fixed,vendor,model,revision,serial,1000512512}": the capacity and the
    /// two sector sizes stand together without separators.
    [[nodiscard]] J3String toString() const override;

    /// Whether both UUID and name are set and the type is known.
    [[nodiscard]] bool isValid() const;

    /// Become no device: every text empty, every number 0.
    void makeInvalid() { *this = K7BlockDevice(); }

    [[nodiscard]] const J3String& devUUID() const { return _devUUID; }       ///< of the file system or the partition
    [[nodiscard]] const J3String& devName() const { return _devName; }       ///< the kernel's name, "sda1"
    [[nodiscard]] const J3String& parentName() const { return _parentName; } ///< a partition's disk; empty for a disk
    [[nodiscard]] const K7KDevNode& devNode() const { return _devNode; }
    [[nodiscard]] int32 type() const { return _type; }           ///< a K7BlockDeviceType
    [[nodiscard]] int32 transport() const { return _transport; } ///< a K7BlockDeviceTransport
    [[nodiscard]] bool readOnly() const { return _readOnly; }
    [[nodiscard]] bool removable() const { return _removable; }
    [[nodiscard]] const J3String& vendor() const { return _vendor; }
    [[nodiscard]] const J3String& model() const { return _model; }
    [[nodiscard]] const J3String& revision() const { return _revision; } ///< of the firmware
    [[nodiscard]] const J3String& serial() const { return _serial; }
    [[nodiscard]] uint64 capacity() const { return _capacity; }                     ///< in the unit of whoever set it
    [[nodiscard]] uint32 physicalSectorSize() const { return _physicalSectorSize; } ///< bytes
    [[nodiscard]] uint32 logicalSectorSize() const { return _logicalSectorSize; }   ///< bytes

    void setDevUUID(const J3String& uuid) { _devUUID = uuid; }
    void setDevName(const J3String& name) { _devName = name; }
    void setParentName(const J3String& name) { _parentName = name; }
    void setDevNode(const K7KDevNode& node) { _devNode = node; }
    void setType(int32 type) { _type = type; }
    void setTransport(int32 transport) { _transport = transport; }
    void setReadOnly(bool readOnly) { _readOnly = readOnly; }
    void setRemoval(bool removable) { _removable = removable; }
    void setVendor(const J3String& vendor) { _vendor = vendor; }
    void setModel(const J3String& model) { _model = model; }
    void setRevision(const J3String& revision) { _revision = revision; }
    void setSerial(const J3String& serial) { _serial = serial; }
    void setCapacity(uint64 capacity) { _capacity = capacity; }
    void setPhysicalSectorSize(uint32 bytes) { _physicalSectorSize = bytes; }
    void setLogicalSectorSize(uint32 bytes) { _logicalSectorSize = bytes; }

    static auto fields(auto& self)
    {
        return std::tie(self._devUUID, self._devName, self._parentName, self._devNode, self._type, self._transport,
                        self._readOnly, self._removable, self._vendor, self._model, self._revision, self._serial,
                        self._capacity, self._physicalSectorSize, self._logicalSectorSize);
    }

private:
    J3String _devUUID;
    J3String _devName;
    J3String _parentName;
    K7KDevNode _devNode;
    int32 _type = K7_BLKDEV_TYPE_UNKNOWN;
    int32 _transport = K7_BLKDEV_TRANSPORT_UNKNOWN;
    bool _readOnly = false;
    bool _removable = false;
    J3String _vendor;
    J3String _model;
    J3String _revision;
    J3String _serial;
    uint64 _capacity = 0;
    uint32 _physicalSectorSize = 0;
    uint32 _logicalSectorSize = 0;
};

} // namespace Kivo

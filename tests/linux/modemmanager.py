'''python-dbusmock template: ModemManager with one modem, its SIM card and its network.

Parameters: "sim" (bool, default true), "simOperatorCode", "simOperatorName",
"networkOperatorCode", "networkOperatorName" (text), "accessTechnologies" (the
bit set of MMModemAccessTechnology).
'''
import dbus
from dbusmock import mockobject

BUS_NAME = 'org.freedesktop.ModemManager1'
MAIN_OBJ = '/org/freedesktop/ModemManager1'
MAIN_IFACE = 'org.freedesktop.ModemManager1'
SYSTEM_BUS = True
IS_OBJECT_MANAGER = True


def load(mock, parameters):
    sim = '/'
    if parameters.get('sim', True):
        sim = '/org/freedesktop/ModemManager1/SIM/0'
        mock.AddObject(sim, 'org.freedesktop.ModemManager1.Sim', {
            'OperatorIdentifier': parameters.get('simOperatorCode', ''),
            'OperatorName': parameters.get('simOperatorName', ''),
        }, [])
    modem = '/org/freedesktop/ModemManager1/Modem/0'
    mock.AddObject(modem, 'org.freedesktop.ModemManager1.Modem', {
        'Sim': dbus.ObjectPath(sim),
        'AccessTechnologies': dbus.UInt32(parameters.get('accessTechnologies', 0)),
    }, [])
    mockobject.objects[modem].AddProperties('org.freedesktop.ModemManager1.Modem.Modem3gpp', {
        'OperatorCode': parameters.get('networkOperatorCode', ''),
        'OperatorName': parameters.get('networkOperatorName', ''),
    })

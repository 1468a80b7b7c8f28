'''python-dbusmock template: GeoClue's manager.

Parameter: "accuracy", the AvailableAccuracyLevel it offers (default 8, exact).
'''
import dbus

BUS_NAME = 'org.freedesktop.GeoClue2'
MAIN_OBJ = '/org/freedesktop/GeoClue2/Manager'
MAIN_IFACE = 'org.freedesktop.GeoClue2.Manager'
SYSTEM_BUS = True


def load(mock, parameters):
    mock.AddProperties(MAIN_IFACE, {
        'InUse': False,
        'AvailableAccuracyLevel': dbus.UInt32(parameters.get('accuracy', 8)),
    })

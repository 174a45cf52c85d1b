#!/usr/bin/gjs
// Shows a window and, on top of its text, the advertisement of a document. usage: host.js URL SETTINGS
//
// URL is the address of the document, SETTINGS the file that keeps this host's settings.

imports.gi.versions.Gtk = '3.0';
imports.gi.versions.Qorix = '2.0';
const {Gtk, Qorix} = imports.gi;
const System = imports.system;

if (ARGV.length !== 2) {
    printerr('usage: host.js URL SETTINGS');
    System.exit(2);
}
Gtk.init(null);
const manager = Qorix.start(new Qorix.InstallOptions({
    bundle_identifier: 'com.example.editor',
    default_ad_file_url: ARGV[0],
    settings_path: ARGV[1],
}));
if (manager === null) {
    System.exit(1); // it has logged why
}
manager.connect('will-show', (_manager, info, host, isPopup) => {
    const kind = isPopup ? 'popup' : 'banner';
    print(`will-show ${info.get_ad_id()} ${kind} ${info.get_width()}x${info.get_height()}`);
});
manager.connect('did-close', (_manager, info) => print(`did-close ${info.get_ad_id()}`));
manager.connect('open-iap', (_manager, info, host, isPopup, frame, url) => print(`open-iap ${url}`));
manager.connect('triggering-navigation', (_manager, element) => {
    print(`triggering-navigation ${element}`);
});

const overlay = new Gtk.Overlay(); // a banner can lie on top of its child
overlay.add(new Gtk.TextView());
const window = new Gtk.Window({title: 'Host in JavaScript', default_width: 600, default_height: 300});
window.add(overlay);
window.connect('destroy', () => Gtk.main_quit());
window.show_all();

manager.show_ad_of_default_url(overlay);
Gtk.main();

// Shows a window and, on top of its text, the advertisement of a document.
//
//   valac --pkg qorix-gtk3-2.0 host.vala
//   ./host URL SETTINGS
//
// URL is the address of the document, SETTINGS the file that keeps this host's settings.

int main (string[] args) {
    Gtk.init (ref args);
    if (args.length != 3) {
        stderr.printf ("usage: host URL SETTINGS\n");
        return 2;
    }

    var options = new Qorix.InstallOptions ("com.example.editor") {
        default_ad_file_url = args[1],
        settings_path = args[2]
    };
    unowned var manager = Qorix.start (options);
    if (manager == null) {
        return 1; // it has logged why
    }
    manager.will_show.connect ((info, host, is_popup, frame) => {
        print ("will-show %d %s %dx%d\n", (int) info.get_ad_id (), is_popup ? "popup" : "banner",
               (int) info.get_width (), (int) info.get_height ());
    });
    manager.did_close.connect ((info, host, is_popup, frame) => {
        print ("did-close %d\n", (int) info.get_ad_id ());
    });
    manager.open_iap.connect ((info, host, is_popup, frame, url) => {
        print ("open-iap %s\n", url);
    });
    manager.triggering_navigation.connect ((element) => {
        print ("triggering-navigation %s\n", element);
    });

    var overlay = new Gtk.Overlay (); // a banner can lie on top of its child
    overlay.add (new Gtk.TextView ());
    var window = new Gtk.Window () {
        title = "Host in Vala",
        default_width = 600,
        default_height = 300
    };
    window.add (overlay);
    window.destroy.connect (Gtk.main_quit);
    window.show_all ();

    manager.show_ad_of_default_url (overlay);
    Gtk.main ();
    return 0;
}

// Runs in the page's own world in every frame, before the page's scripts. A click on what is not in
// the document passes nothing of the document, where the watcher could hear it: it can only come of
// a script's call, so the two calls that make one tell the watcher before.
(() => {
  'use strict';
  const {apply} = Reflect;
  const {MouseEvent} = window;
  const {click} = HTMLElement.prototype;
  const {dispatchEvent} = EventTarget.prototype;
  const {getRootNode} = Node.prototype;

  const tell = (target) => {
    try {
      const root = apply(getRootNode, target, [{composed: true}]);
      if (root !== document) {
        apply(dispatchEvent, document, [new MouseEvent('qorixclick', {relatedTarget: root})]);
      }
    } catch (noNode) {
      // what is no node has no link
    }
  };

  HTMLElement.prototype.click = {
    click() {
      tell(this);
      return apply(click, this, arguments);
    },
  }.click;

  EventTarget.prototype.dispatchEvent = {
    dispatchEvent(event) {
      if (event instanceof MouseEvent) {
        tell(this);
      }
      return apply(dispatchEvent, this, arguments);
    },
  }.dispatchEvent;
})();

// The page of one event, which has its data in a block.
import {showEvent, takeChoices} from './app.js';
import {unpack} from './data.js';
import {byId, h} from './dom.js';
import {t} from './language.js';

async function start() {
  takeChoices();
  showEvent(await unpack(byId('data').textContent));
}

// Without its data the page still has the first view; the lists follow as text.
// A page that gets its events elsewhere has no block.
if (byId('data')) {
  start().catch((error) => {
    byId('main').prepend(h('p.card', t('cannotRead')));
    document.body.dataset.ready = 'failed';
    throw error;
  });
}
